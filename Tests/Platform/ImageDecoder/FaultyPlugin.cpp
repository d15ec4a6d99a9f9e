#include "Tests/Platform/ImageDecoder/HangingPlugin.h"

#include <QImage>
#include <QtPlugin>

#include <atomic>

namespace {

std::atomic<int> hanging = 0;
std::atomic<bool> isReleased = false;

class HangingHandler final : public QImageIOHandler {
public:
    bool canRead() const override {
        return device()->peek(HangingPlugin::signature().size()) == HangingPlugin::signature();
    }

    bool read(QImage*) override {
        ++hanging;
        while (!isReleased) {
        }
        --hanging;
        return false;
    }
};

} // namespace

int HangingPlugin::hangingThreads() {
    return hanging;
}

void HangingPlugin::release() {
    isReleased = true;
}

QImageIOPlugin::Capabilities HangingPlugin::capabilities(QIODevice*, const QByteArray& format) const {
    return format == "heif" ? CanRead : Capabilities();
}

QImageIOHandler* HangingPlugin::create(QIODevice* device, const QByteArray&) const {
    auto* const handler = new HangingHandler;
    handler->setDevice(device);
    handler->setFormat("heif");
    return handler;
}

Q_IMPORT_PLUGIN(HangingPlugin)
