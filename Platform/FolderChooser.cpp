#include "Platform/FolderChooser.h"

#include "Platform/AnswerWithin.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QPalette>
#include <QPixmapCache>
#include <QStandardPaths>
#include <QWindow>

#include <mntent.h>
#include <stdio.h>

#include <array>
#include <filesystem>
#include <memory>
#include <string_view>
#include <system_error>

namespace Platform {

namespace {

constexpr std::chrono::milliseconds patience{500}; // with a disk

/// The user's picture folder where there is one, the home folder otherwise.
QString usualFolder() {
    const QString pictures = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    return QFileInfo(pictures).isDir() ? pictures : QDir::homePath();
}

/// Whether it is a folder; nothing where its disk does not answer soon.
std::optional<bool> isFolder(const FileURL& url) {
    return answerWithin(patience, [path = url.path()] {
        std::error_code code;
        return std::filesystem::is_directory(path, code);
    });
}

/// Whether each disk that is mounted does so soon. Those that are mounted only when somebody looks (autofs) are left alone.
bool doAllDisksAnswer() {
    const auto answer = answerWithin(patience, [] {
        const std::unique_ptr<FILE, int (*)(FILE*)> mounts(setmntent("/proc/self/mounts", "r"), endmntent);
        std::array<char, 4096> line;
        mntent mount{};
        while (mounts && getmntent_r(mounts.get(), &mount, line.data(), static_cast<int>(line.size()))) {
            if (std::string_view(mount.mnt_type) != "autofs") {
                std::error_code code;
                std::filesystem::directory_iterator(mount.mnt_dir, code);
            }
        }
        return true;
    });
    return answer.has_value();
}

/// As dark as the rest of the application; choosers of the desktop keep their own colours.
QPalette darkPalette() {
    const QColor text(0xeb, 0xeb, 0xeb);
    const QColor dimmed(0x8e, 0x8e, 0x93);
    QPalette palette(QColor(0x3a, 0x3a, 0x3c), QColor(0x26, 0x26, 0x28));
    palette.setColor(QPalette::Base, QColor(0x1c, 0x1c, 0x1e));
    palette.setColor(QPalette::AlternateBase, QColor(0x2c, 0x2c, 0x2e));
    palette.setColor(QPalette::Highlight, QColor(0x0a, 0x5e, 0xc4));
    for (const auto role :
        {QPalette::Text, QPalette::WindowText, QPalette::ButtonText, QPalette::HighlightedText}) {
        palette.setColor(role, text);
        palette.setColor(QPalette::Disabled, role, dimmed);
    }
    palette.setColor(QPalette::PlaceholderText, dimmed);
    return palette;
}

} // namespace

std::optional<FileURL> runFolderChooser(const QString& message, const FileURL& start) {
    const bool canStartThere =
        isFolder(start).value_or(false); // else the chooser would wait for it, and the window with it
    auto chooser = std::make_unique<QFileDialog>(
        nullptr, message, canStartThere ? QFile::decodeName(start.path().c_str()) : usualFolder());
    chooser->setPalette(darkPalette());
    chooser->setFileMode(QFileDialog::Directory);
    chooser->setOption(QFileDialog::ShowDirsOnly);
    chooser->setLabelText(QFileDialog::Accept, QStringLiteral("Open"));
    chooser->winId(); // makes its window, so that it can be tied to ours and does not fall behind it
    chooser->windowHandle()->setTransientParent(QGuiApplication::focusWindow());
    const bool isAccepted = chooser->exec() == QDialog::Accepted;
    const QStringList chosen = isAccepted ? chooser->selectedFiles() : QStringList();
    if (!doAllDisksAnswer()) {
        (void)chooser.release(); // it may be looking there, on a thread that its end would wait for
    }
    QPixmapCache::clear(); // the style keeps drawings by the palette, which the next chooser has anew
    if (chosen.isEmpty()) {
        return std::nullopt;
    }
    const QByteArray path = QFile::encodeName(chosen.constFirst());
    return FileURL(std::filesystem::path(path.toStdString()));
}

} // namespace Platform
