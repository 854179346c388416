#pragma once

#include <QString>
#include <QStringList>
#include <QWidget>
#include <functional>

class QAction;
class QToolBar;
class QTreeWidget;

namespace quillora::gui {

// The attachments pane, docked by the main window as "dckAllegati". Its list is the message's
// attachment list: the main window reads paths() to save and calls setPaths() after opening.
class frmAllegati : public QWidget {
    Q_OBJECT
public:
    explicit frmAllegati(QWidget* parent = nullptr);

    void Form_Load();
    // Only the header row left.
    void IniList();
    // Appends a row for the file, then CheckButton.
    void InsFile(const QString& path);
    void ClearList();
    // Remove is offered only while there is a row to remove.
    void CheckButton();
    // "cmdAllegatiNew" asks for a file and adds it; "cmdAllegatiDel" removes the current row.
    void Dks_CommandClick(const QString& id);

    // Full paths in row order, duplicates kept.
    QStringList paths() const;
    // The list of an opened message; the message is not marked modified by it.
    void setPaths(const QStringList& paths);

    // The status-bar text while the pointer is over the list (a language text).
    void setHelpText(const QString& text);

    QTreeWidget* LIST() const { return m_list; }
    QAction* command(const QString& id) const;

signals:
    // Every change the user makes to the list; the main window marks the message modified.
    void modified();
    void helpText(const QString& text);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void addFromDialog();
    void removeCurrentRow();

    QToolBar* m_bar = nullptr;
    QAction* m_add = nullptr;
    QAction* m_remove = nullptr;
    QTreeWidget* m_list = nullptr;
    QString m_helpText;
};

} // namespace quillora::gui
