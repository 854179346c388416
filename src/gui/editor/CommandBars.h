#pragma once

#include <QAction>
#include <QHash>
#include <QMenu>
#include <QPointer>
#include <QString>
#include <QToolBar>
#include <functional>

class QComboBox;
class QLineEdit;
class QMainWindow;

namespace quillora::gui {

// The menus, toolbars and commands of the main window, built from one table. Every command
// is a QAction whose object name is its identifier; all of them reach one dispatcher.
class CommandBars {
public:
    // Builds everything into `window`; `dispatch` receives the identifier of every command.
    void build(QMainWindow* window, std::function<void(const QString&)> dispatch);

    QAction* action(const QString& id) const; // nullptr for an unknown identifier
    // The same, for routines that cannot go on without it: a missing one is a failure of the
    // routine (std::runtime_error), reported by its error report.
    QAction* require(const QString& id) const;
    QToolBar* requireToolbar(const QString& id) const;
    QToolBar* toolbar(const QString& id) const;
    QMenu* menu(const QString& id) const;
    QList<QToolBar*> toolbars() const;
    QList<QMenu*> menus() const;
    QList<QAction*> actions() const;

    QComboBox* fontName = nullptr; // "cmbFontName"
    QComboBox* fontSize = nullptr; // "cmbFontSize"
    QLineEdit* subject = nullptr;  // "txtOggetto"

private:
    QAction* make(QMainWindow* window, const struct CommandSpec& spec);
    QMenu* popup(QMainWindow* window, const QString& id, const QString& caption,
                 const QStringList& commands);

    std::function<void(const QString&)> m_dispatch;
    // Guarded: a bar or command deleted elsewhere is missing, never dangling.
    QHash<QString, QPointer<QAction>> m_actions;
    QHash<QString, QPointer<QToolBar>> m_toolbars;
    QHash<QString, QPointer<QMenu>> m_menus;
};

} // namespace quillora::gui
