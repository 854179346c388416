#pragma once

#include "core/tools/TemplateStore.h"

#include <QDialog>
#include <QTimer>
#include <deque>
#include <functional>

class QLabel;
class QListWidget;
class QPushButton;

namespace quillora::gui {

// The template chooser: numbered thumbnails of "Professional" then "Simple"; the chosen one
// becomes the start of a new message.
class frmTemplate : public QDialog {
    Q_OBJECT
public:
    // importTemplate gets the chosen thumbnail's full path (ImportaTemplate of the main window).
    explicit frmTemplate(std::function<void(const QString&)> importTemplate,
                         QWidget* parent = nullptr);

    // Starts filling the list from the template folder, one thumbnail per turn of the event
    // loop, so that a large folder never freezes the window. loaded() follows the last one.
    void Form_Load();
    bool isLoading() const { return !m_pending.empty(); }
    void lstProf_DblClick();
    void cmdImport_Click();

    QListWidget* lstProf() const { return m_list; }
    QPushButton* cmdImport() const { return m_import; }

signals:
    void loaded();

private:
    void loadNext();
    void choose();

    std::function<void(const QString&)> m_importTemplate;
    QLabel* m_title = nullptr;
    QLabel* m_description = nullptr;
    QListWidget* m_list = nullptr;
    QPushButton* m_import = nullptr;
    std::deque<TemplateStore::Entry> m_pending;
    QTimer m_next;
    int m_number = 0;
};

} // namespace quillora::gui
