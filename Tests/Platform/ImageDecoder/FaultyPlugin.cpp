#include "Tests/Platform/ImageDecoder/FaultyPlugin.h"

#include <QImage>
#include <QtPlugin>

#include <atomic>
#include <stdexcept>

namespace {

std::atomic<int> hanging = 0;
std::atomic<bool> isReleased = false;

class FaultyHandler final : public QImageIOHandler {
public:
    bool canRead() const override {
        return begins(FaultyPlugin::hangingSignature()) || begins(FaultyPlugin::throwingSignature());
    }

    bool read(QImage*) override {
        if (begins(FaultyPlugin::throwingSignature())) {
            throw std::logic_error("the plugin is wrong");
        }
        ++hanging;
        while (!isReleased) {
        }
        --hanging;
        return false;
    }

private:
    bool begins(const QByteArray& signature) const { return device()->peek(signature.size()) == signature; }
};

} // namespace

int FaultyPlugin::hangingThreads() {
    return hanging;
}

void FaultyPlugin::release() {
    isReleased = true;
}

QImageIOPlugin::Capabilities FaultyPlugin::capabilities(QIODevice*, const QByteArray& format) const {
    return format == "heif" ? CanRead : Capabilities();
}

QImageIOHandler* FaultyPlugin::create(QIODevice* device, const QByteArray&) const {
    auto* const handler = new FaultyHandler;
    handler->setDevice(device);
    handler->setFormat("heif");
    return handler;
}

Q_IMPORT_PLUGIN(FaultyPlugin)
