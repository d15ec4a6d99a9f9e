#pragma once

#include "Vantrel/CullingViewModel.h"

#include <QEventLoop>
#include <QTimer>

/// A view model whose thumbnails can be counted.
class ObservedViewModel : public CullingViewModel {
public:
    using CullingViewModel::CullingViewModel;

    int preloadedPhotos() { return static_cast<int>(smallThumbnails().storage().size()); }

    /// Runs the event loop until that many photos have their small thumbnail.
    void waitForPreload(int photos) {
        QEventLoop loop;
        QTimer poll;
        QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
            if (preloadedPhotos() >= photos) {
                loop.quit();
            }
        });
        poll.start(20);
        loop.exec();
    }
};
