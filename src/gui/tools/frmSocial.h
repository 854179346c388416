#pragma once

#include <QDialog>
#include <QList>
#include <functional>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTabWidget;
class QToolButton;

namespace quillora::gui {

// The social-links window: the organisation's page on nine networks, and a linked icon of one
// of them inserted at the caret. Made once while the main window loads, then only shown and
// hidden; the addresses live in "Social.dll" of the shared data folder.
class frmSocial : public QDialog {
    Q_OBJECT
public:
    // insertHtml puts a fragment at the caret of the message.
    explicit frmSocial(std::function<void(const QString&)> insertHtml, QWidget* parent = nullptr);

    // Fills the window; `advance` moves the splash bar on by 5 before each network.
    void InitializeForm(const std::function<void()>& advance = {});
    void ApriLinkSocial();
    void SalvaLinkSocial();
    void cmdIcon_Click(int index);
    void cmbSize_Click();
    void cmdInsertLink_Click();

    QLineEdit* txtSocial(int i) const { return m_addresses.at(i); }
    QLabel* lblSocial(int i) const { return m_labels.at(i); }
    QToolButton* cmdIcon(int i) const { return m_icons.at(i); }
    QTabWidget* TB() const { return m_tabs; }
    QComboBox* cmbSize() const { return m_size; }
    QLabel* tbPreview() const { return m_preview; }
    QPushButton* cmdInsertLink() const { return m_insert; }
    // The file name of the icon in the preview (the preview's tag).
    QString previewTag() const { return m_previewTag; }

protected:
    void closeEvent(QCloseEvent* event) override;
    // Escape closes the window the same way.
    void reject() override;

private:
    void showPreview(const QString& name);
    QString addressFile() const;

    std::function<void(const QString&)> m_insertHtml;
    QList<QLineEdit*> m_addresses;
    QList<QLabel*> m_labels;
    QList<QToolButton*> m_icons;
    QTabWidget* m_tabs = nullptr;
    QComboBox* m_size = nullptr;
    QLabel* m_preview = nullptr;
    QPushButton* m_insert = nullptr;
    QString m_previewTag;
};

} // namespace quillora::gui
