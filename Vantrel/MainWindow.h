#pragma once

class CullingViewModel;
class QQuickView;

/// Makes the window the main window of that view model: its content, title, size and least size. The view model
/// outlives the window.
void setUpMainWindow(QQuickView& window, CullingViewModel& viewModel);
