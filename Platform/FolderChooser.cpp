#include "Platform/FolderChooser.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QStandardPaths>
#include <QWindow>

namespace Platform {

namespace {

/// The user's picture folder where there is one, the home folder otherwise.
QString usualFolder() {
    const QString pictures = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    return QFileInfo(pictures).isDir() ? pictures : QDir::homePath();
}

} // namespace

std::optional<FileURL> runFolderChooser(const QString& message, const FileURL& start) {
    QFileDialog chooser(
        nullptr, message, start.isEmpty() ? usualFolder() : QFile::decodeName(start.path().c_str()));
    chooser.setFileMode(QFileDialog::Directory);
    chooser.setOption(QFileDialog::ShowDirsOnly);
    chooser.setLabelText(QFileDialog::Accept, QStringLiteral("Open"));
    chooser.winId(); // makes its window, so that it can be tied to ours and does not fall behind it
    chooser.windowHandle()->setTransientParent(QGuiApplication::focusWindow());
    if (chooser.exec() != QDialog::Accepted || chooser.selectedFiles().isEmpty()) {
        return std::nullopt;
    }
    const QByteArray path = QFile::encodeName(chooser.selectedFiles().constFirst());
    return FileURL(std::filesystem::path(path.toStdString()));
}

} // namespace Platform
