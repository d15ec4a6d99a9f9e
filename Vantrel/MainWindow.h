#pragma once

class CullingViewModel;
class QQuickView;

namespace Platform {
class TaskScheduler;
}

/// Makes the window the main window of that view model: its content, title, size and least size. The view model and
/// the scheduler, which the window's own decoding goes to, outlive it. Main thread.
void setUpMainWindow(QQuickView& window, CullingViewModel& viewModel, Platform::TaskScheduler& scheduler);
