#include "Vantrel/WindowSystem.h"

#include <QGuiApplication>

bool isOnX11() {
    return QGuiApplication::platformName() == QLatin1String("xcb");
}
