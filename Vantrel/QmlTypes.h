#pragma once

#include "Platform/FileURL.h"
#include "Platform/Image.h"
#include "Platform/Task.h"

#include <QObject>
#include <qqmlregistration.h>

// Platform's types, made known to QML under names of the screen's own: Platform knows nothing of QML.

struct PhotoImageForQml {
    Q_GADGET
    QML_FOREIGN(Platform::Image)
    QML_VALUE_TYPE(photoImage)
};

struct FileURLForQml {
    Q_GADGET
    QML_FOREIGN(Platform::FileURL)
    QML_VALUE_TYPE(fileURL)
};

struct TaskSchedulerForQml {
    Q_GADGET
    QML_FOREIGN(Platform::TaskScheduler)
    QML_NAMED_ELEMENT(TaskScheduler)
    QML_UNCREATABLE("handed to the screen")
};
