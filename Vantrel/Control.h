#pragma once

#include <QQuickItem>
#include <QString>
#include <qqmlregistration.h>

/// A control as keyboard and screen reader see it: while it has the focus, Space, Return and Enter click it, once however
/// long they are held; and it tells its name, its key, and whether it can be pressed, which Qt Quick's own interface for
/// items does not tell. Its item is to have an Accessible.role, by which Qt Quick counts it in. Main thread.
class Control : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT

    Q_PROPERTY(QString text MEMBER m_text NOTIFY textChanged REQUIRED FINAL)
    /// Names the key that does the same; empty where there is none.
    Q_PROPERTY(QString shortcut MEMBER m_shortcut NOTIFY shortcutChanged FINAL)
    Q_PROPERTY(bool isCheckable MEMBER m_isCheckable NOTIFY isCheckableChanged FINAL)
    Q_PROPERTY(bool isChecked MEMBER m_isChecked NOTIFY isCheckedChanged FINAL)

public:
    explicit Control(QQuickItem* parent = nullptr);

    /// Has screen readers find these controls. Once before the first window; again does nothing.
    static void installAccessibility();

    const QString& text() const { return m_text; }
    const QString& shortcut() const { return m_shortcut; }
    bool isCheckable() const { return m_isCheckable; }
    bool isChecked() const { return m_isChecked; }

signals:
    void textChanged();
    void shortcutChanged();
    void isCheckableChanged();
    void isCheckedChanged();
    void clicked();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void itemChange(ItemChange change, const ItemChangeData& data) override;

private:
    void tellName();
    void tellChecked();

    QString m_text;
    QString m_shortcut;
    bool m_isCheckable = false;
    bool m_isChecked = false;
};
