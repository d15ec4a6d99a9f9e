// replay-corpus FOLDER: feeds a fuzzing target with all files of its corpus, in the order of their names, and with some changed
// copies of each, always the same ones. It stands in for the fuzzing engine where the target is built without, as in the tests,
// and ends badly where the target does.
#include <QDir>
#include <QTextStream>

#include <algorithm>
#include <random>

extern "C" int LLVMFuzzerTestOneInput(const quint8* bytes, std::size_t size);

namespace {

constexpr int changedCopies = 40; // of each file

void feed(const QByteArray& input) {
    LLVMFuzzerTestOneInput(
        reinterpret_cast<const quint8*>(input.constData()), static_cast<std::size_t>(input.size()));
}

/// A copy with a few bytes changed, doubled or left out.
QByteArray changed(QByteArray input, std::mt19937& random) {
    constexpr int mostChanges = 4;
    constexpr std::mt19937::result_type mostBytes = 16;
    for (auto changes = random() % mostChanges + 1; changes > 0 && !input.isEmpty(); --changes) {
        const auto place = static_cast<qsizetype>(random() % static_cast<std::size_t>(input.size()));
        const auto count = static_cast<qsizetype>(random() % mostBytes + 1);
        switch (random() % 4) {
        case 0:
            input[place] = static_cast<char>(random());
            break;
        case 1:
            input[place] = static_cast<char>(input[place] ^ (1 << random() % 8));
            break;
        case 2:
            input.remove(place, count);
            break;
        default:
            input.insert(place, input.mid(place, count));
            break;
        }
    }
    return input;
}

} // namespace

int main(int argc, char** argv) {
    QTextStream out(stdout);
    if (argc != 2) {
        out << "usage: " << argv[0] << " FOLDER\n";
        return 2;
    }
    const QDir folder(QFile::decodeName(argv[1]));
    const QStringList names = folder.entryList(QDir::Files, QDir::Name);
    std::mt19937 random; // of a fixed seed
    for (const QString& name : names) {
        out << name << Qt::endl; // the last to be seen where the target ends badly
        QFile file(folder.filePath(name));
        if (!file.open(QIODevice::ReadOnly)) {
            out << file.errorString() << '\n';
            return 1;
        }
        const QByteArray content = file.readAll();
        feed(content);
        for (int copy = 0; copy < changedCopies; ++copy) {
            feed(changed(content, random));
        }
    }
    out << names.size() << " files, " << names.size() * (1 + changedCopies) << " inputs\n";
    return names.isEmpty() ? 1 : 0;
}
