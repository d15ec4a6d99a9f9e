#pragma once

#include <QByteArray>
#include <QImageIOPlugin>

/// A plugin for pictures, under the name of a format for which there need be no other here, that does not return from reading
/// one, as a decoder in an endless loop, or throws something. Made part of the test program by Q_IMPORT_PLUGIN.
class FaultyPlugin : public QImageIOPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QImageIOHandlerFactoryInterface_iid FILE "FaultyPlugin.json")

public:
    /// The beginnings of the files that are its own.
    static QByteArray hangingSignature() { return QByteArray(4, '\0') + "ftypheic"; }
    static QByteArray throwingSignature() { return QByteArray(4, '\0') + "ftypheix"; }

    /// How many threads are in it now. Any thread.
    static int hangingThreads();

    /// Lets those that hang return, with nothing read, and does not make any hang any more. Any thread.
    static void release();

    Capabilities capabilities(QIODevice* device, const QByteArray& format) const override;
    QImageIOHandler* create(QIODevice* device, const QByteArray& format) const override;
};
