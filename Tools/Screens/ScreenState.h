#pragma once

#include "Vantrel/CullingViewModel.h"

#include <QSize>
#include <QString>

#include <functional>
#include <vector>

class Stage;

/// A state of the screen that is worth looking at, and how it comes about: by what a user does, on real files.
struct ScreenState {
    QString name; ///< fit for a file
    std::function<void(Stage&)> arrange;
    CullingViewModel::FeatureFlags features = {};
    QSize size = {1440, 960}; ///< of the window, in points
    int scale = 1;            ///< pixels per point
};

/// All of them that have that many pixels per point.
std::vector<ScreenState> screenStates(double scale);
