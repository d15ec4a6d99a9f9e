#pragma once

#include "Platform/Image.h"

#include <QObject>
#include <qqmlregistration.h>

// Platform's value types, made known to QML under names of the screen's own: Platform knows nothing of QML.

struct PhotoImageForQml {
    Q_GADGET
    QML_FOREIGN(Platform::Image)
    QML_VALUE_TYPE(photoImage)
};
