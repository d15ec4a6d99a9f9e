#pragma once

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <vector>

struct _AtspiAccessible;    // NOLINT(bugprone-reserved-identifier): the names are AT-SPI's
struct _AtspiEventListener; // NOLINT(bugprone-reserved-identifier)

/// One thing of which programs tell assistive technology: a window, a button, a text. What it says of itself is asked
/// of the program each time, and empty once it is gone.
class Accessible {
public:
    explicit Accessible(std::shared_ptr<_AtspiAccessible> accessible);

    QString role() const; ///< as AT-SPI calls it: "push button"
    QString name() const;
    QString description() const;
    QString text() const;       ///< of what can be read letter by letter
    QStringList states() const; ///< as AT-SPI calls them: "focused"
    QStringList actions() const;
    qint64 processId() const;
    std::vector<Accessible> children() const;

    bool is(const QString& state) const { return states().contains(state); }

    /// Does one of its actions, or sets it going; false where it has none of that name or refuses.
    bool act(const QString& action) const;

    /// Puts the text in place of the one in it; false where it takes none.
    bool enter(const QString& text) const;

    /// Role and name: "push button: Undo".
    QString inWords() const;

private:
    std::shared_ptr<_AtspiAccessible> m_accessible;
};

/// What assistive technology is told of the programs on the message bus that the environment names. One at a time in a
/// process, on the main thread.
class AccessibleTree {
public:
    /// Throws std::runtime_error where nobody tells anything.
    AccessibleTree();
    ~AccessibleTree();
    AccessibleTree(const AccessibleTree&) = delete;
    AccessibleTree& operator=(const AccessibleTree&) = delete;

    /// What a program shows now, from its windows on, each thing before what is in it.
    std::vector<Accessible> showing(qint64 processId) const;

    /// What assistive technology was told since the last forget() to be called otherwise now, in words: "label: 2
    /// approved". The name is asked when this is called, as it is with them.
    QStringList renamed();

    void forget();

private:
    struct Unreferencer {
        void operator()(_AtspiEventListener* listener) const;
    };

    QStringList m_renamed;
    std::unique_ptr<_AtspiEventListener, Unreferencer> m_listener;
};
