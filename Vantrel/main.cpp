#include "Vantrel/VantrelApp.h"

#include <QApplication>

int main(int argc, char** argv) {
    QApplication::setOrganizationName(QStringLiteral("Vantrel"));
    QApplication::setApplicationName(QStringLiteral("Vantrel"));
    QApplication::setDesktopFileName(QStringLiteral("org.vantrel.Vantrel"));
    const QApplication application(argc, argv);
    VantrelApp vantrel;
    vantrel.show();
    return QApplication::exec();
}
