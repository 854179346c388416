#pragma once

#include <QHash>
#include <QString>
#include <functional>

class QAction;
class QComboBox;
class QLineEdit;
class QMainWindow;
class QMenu;
class QToolBar;

namespace quillora::gui {

// The menus, toolbars and commands of the main window, built from one table. Every command
// is a QAction whose object name is its identifier; all of them reach one dispatcher.
class CommandBars {
public:
    // Builds everything into `window`; `dispatch` receives the identifier of every command.
    void build(QMainWindow* window, std::function<void(const QString&)> dispatch);

    QAction* action(const QString& id) const; // nullptr for an unknown identifier
    QToolBar* toolbar(const QString& id) const;
    QMenu* menu(const QString& id) const;
    QList<QToolBar*> toolbars() const { return m_toolbars.values(); }
    QList<QMenu*> menus() const { return m_menus.values(); }
    QList<QAction*> actions() const { return m_actions.values(); }

    QComboBox* fontName = nullptr; // "cmbFontName"
    QComboBox* fontSize = nullptr; // "cmbFontSize"
    QLineEdit* subject = nullptr;  // "txtOggetto"

private:
    QAction* make(QMainWindow* window, const struct CommandSpec& spec);
    QMenu* popup(QMainWindow* window, const QString& id, const QString& caption,
                 const QStringList& commands);

    std::function<void(const QString&)> m_dispatch;
    QHash<QString, QAction*> m_actions;
    QHash<QString, QToolBar*> m_toolbars;
    QHash<QString, QMenu*> m_menus;
};

} // namespace quillora::gui
