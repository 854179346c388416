#pragma once

#include "core/tools/SnippetStore.h"

#include <QDialog>
#include <QPointer>
#include <QString>
#include <QTreeWidget>
#include <QWidget>

class QAction;
class QLineEdit;
class QMimeData;
class QPlainTextEdit;
class QPushButton;
class QToolBar;

namespace quillora::gui {

class frmMemoryPop;

// The list of the snippet pane: rows are dragged from here onto the visual page.
class MemoryList : public QTreeWidget {
    Q_OBJECT
public:
    explicit MemoryList(QWidget* parent);
    // The marker a drag from this list carries, so the page knows where a drop comes from.
    static const QString& mimeType();
    // True when the drag began in the snippet pane's list.
    static bool fromSnippetList(const QMimeData* data);

protected:
    void startDrag(Qt::DropActions supportedActions) override;
};

// The snippet pane, docked by the main window as "dckMemory". Each row is one snippet file of
// the "Memory" folder: its title shown, its file name kept as the row's hidden data.
class frmMemory : public QWidget {
    Q_OBJECT
public:
    explicit frmMemory(QWidget* parent = nullptr);
    ~frmMemory() override;

    // Reads the folder anew (session's APP_MEMORY).
    void IniList();
    void CaricaMemory();
    void ClearList();
    void CheckButton();
    void InsMemory(const QString& title, const QString& text);
    void ModMemory(const QString& title, const QString& text);
    void DelMemory();
    void Dks_CommandClick(const QString& id);
    void LIST_DblClick();

    // The file name of the current row; empty when there is no snippet row.
    QString currentFileName() const;
    // What the current row drops: its text with CR LF as "<BR>". Empty when none.
    QString currentDropHtml() const;

    MemoryList* LIST() const { return m_list; }
    QAction* command(const QString& id) const;
    frmMemoryPop* entryForm();

signals:
    void helpText(const QString& text);
    // Enter on a row: insert it at the caret, as a drop would at the drop point.
    void insertRequested(const QString& html);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    SnippetStore store() const;
    void showEntryForm(bool modify);

    QToolBar* m_bar = nullptr;
    QAction* m_new = nullptr;
    QAction* m_mod = nullptr;
    QAction* m_del = nullptr;
    MemoryList* m_list = nullptr;
    QPointer<frmMemoryPop> m_pop;
};

// The entry form for a new or changed snippet: a name and a text.
class frmMemoryPop : public QDialog {
    Q_OBJECT
public:
    explicit frmMemoryPop(frmMemory* owner, QWidget* parent = nullptr);

    bool Modifica = false;
    QString NomeFile;

    void Form_Activate();
    void cmdOK_Click();

    QLineEdit* txtNome() const { return m_name; }
    QPlainTextEdit* txtMemory() const { return m_text; }
    QPushButton* cmdOK() const { return m_ok; }

protected:
    void showEvent(QShowEvent* event) override;

private:
    frmMemory* m_owner;
    QLineEdit* m_name = nullptr;
    QPlainTextEdit* m_text = nullptr;
    QPushButton* m_ok = nullptr;
};

} // namespace quillora::gui
