#pragma once

#include "Platform/FileURL.h"

#include <QImage>
#include <QProcessEnvironment>
#include <QRect>
#include <QString>

/// A window on a desktop as a pager sees it.
struct ScreenWindow {
    unsigned long id = 0; ///< X11's; 0: no window of X11
    QString title;
    QString className; ///< the instance part of X11's WM_CLASS, or Wayland's app_id
    qint64 processId = 0;
    QRect content; ///< in pixels of the picture, without the frame
};

/// Where programs show their windows: a screen and what rules it.
class Desktop {
public:
    virtual ~Desktop() = default;

    /// The surroundings of a program that is to appear on it, with that home folder.
    virtual QProcessEnvironment environment(const Platform::FileURL& home) const = 0;

    /// What is seen on the whole screen now.
    virtual QImage picture() const = 0;

    /// The window that has the keyboard, as it is now.
    virtual ScreenWindow activeWindow() const = 0;
};
