#include "Vantrel/VantrelApp.h"

#include "Vantrel/MainWindow.h"

VantrelApp::VantrelApp() {
    setUpMainWindow(m_window, m_viewModel, m_scheduler);
}

void VantrelApp::show() {
    m_window.show();
}
