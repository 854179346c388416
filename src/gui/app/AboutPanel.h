#pragma once

#include <QLabel>
#include <QWidget>

namespace quillora::gui {

// A label that works like a link: pointing hand, click signal.
class LinkLabel : public QLabel {
    Q_OBJECT
public:
    explicit LinkLabel(QWidget* parent = nullptr);
signals:
    void clicked();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
};

// What the About and splash windows share: the picture, the program's name, the version and
// the two links. Its labels let clicks through to the window, except the links.
class AboutPanel : public QWidget {
    Q_OBJECT
public:
    // formName names the window in error reports ("frmInfoSu", "frmSplash").
    AboutPanel(const QString& formName, QWidget* parent);

    // Sets the version and the link captions from the session's addresses (read from the
    // program folder when start-up has not read them yet).
    void Form_Load();

    // The language's web site, by the current language at the time of the click.
    void Link_Click();
    // A new mail to the support address shown.
    void MailTo_Click();

    QLabel* picture() const { return m_picture; }
    QLabel* versionLabel() const { return m_version; }

private:
    QString m_formName;
    QLabel* m_picture = nullptr;
    QLabel* m_version = nullptr;
    LinkLabel* m_site = nullptr;
    LinkLabel* m_mail = nullptr;
    QLabel* m_siteCaption = nullptr;
    QLabel* m_mailCaption = nullptr;
};

} // namespace quillora::gui
