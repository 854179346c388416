#include "gui/app/AboutPanel.h"

#include "core/app/Links.h"
#include "core/app/Version.h"
#include "gui/app/Dialogs.h"
#include "gui/app/ProgramIcon.h"
#include "gui/app/Reported.h"
#include "gui/app/Session.h"

#include <QGridLayout>
#include <QMouseEvent>
#include <QUrl>
#include <QVBoxLayout>

namespace quillora::gui {

namespace {

constexpr int kPictureSize = 96;

const char* kStyleSheet = R"(
QLabel#lblTitle { color: #17253b; }
QLabel#lblSubtitle, QLabel#lblVersionLabel, QLabel#lblSiteLabel, QLabel#lblMailLabel {
    color: #66707e;
}
QLabel#lblVersion { color: #17253b; font-weight: bold; }
QLabel#Link, QLabel#MailTo { color: #1f5fd1; }
QLabel#Link:hover, QLabel#MailTo:hover { color: #0d3f9f; text-decoration: underline; }
)";

QLabel* caption(const QString& text, const char* name, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setObjectName(QString::fromLatin1(name));
    return label;
}

} // namespace

LinkLabel::LinkLabel(QWidget* parent) : QLabel(parent) {
    setCursor(Qt::PointingHandCursor);
    setTextFormat(Qt::PlainText);
    setFocusPolicy(Qt::TabFocus);
}

void LinkLabel::mousePressEvent(QMouseEvent* event) {
    event->setAccepted(event->button() == Qt::LeftButton);
}

void LinkLabel::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    event->accept();
    if (rect().contains(event->position().toPoint()))
        emit clicked();
}

AboutPanel::AboutPanel(const QString& formName, QWidget* parent)
    : QWidget(parent), m_formName(formName) {
    setStyleSheet(QString::fromLatin1(kStyleSheet));

    m_picture = new QLabel(this);
    m_picture->setObjectName(QStringLiteral("Image1"));
    m_picture->setFixedSize(kPictureSize, kPictureSize);
    m_picture->setPixmap(programPixmap(kPictureSize));

    auto* title = caption(QStringLiteral("Quillora"), "lblTitle", this);
    QFont titleFont = title->font();
    titleFont.setPointSizeF(titleFont.pointSizeF() * 2.2);
    titleFont.setWeight(QFont::DemiBold);
    title->setFont(titleFont);
    auto* subtitle = caption(tr("HTML e-mail newsletter editor"), "lblSubtitle", this);

    m_version = caption(QString(), "lblVersion", this);
    m_site = new LinkLabel(this);
    m_site->setObjectName(QStringLiteral("Link"));
    m_mail = new LinkLabel(this);
    m_mail->setObjectName(QStringLiteral("MailTo"));
    connect(m_site, &LinkLabel::clicked, this, &AboutPanel::Link_Click);
    connect(m_mail, &LinkLabel::clicked, this, &AboutPanel::MailTo_Click);

    auto* facts = new QGridLayout;
    facts->setHorizontalSpacing(14);
    facts->setVerticalSpacing(6);
    facts->addWidget(caption(tr("Version"), "lblVersionLabel", this), 0, 0);
    facts->addWidget(m_version, 0, 1);
    m_siteCaption = caption(tr("Web site"), "lblSiteLabel", this);
    facts->addWidget(m_siteCaption, 1, 0);
    facts->addWidget(m_site, 1, 1);
    m_mailCaption = caption(tr("Support"), "lblMailLabel", this);
    facts->addWidget(m_mailCaption, 2, 0);
    facts->addWidget(m_mail, 2, 1);
    facts->setColumnStretch(1, 1);

    auto* texts = new QVBoxLayout;
    texts->setSpacing(2);
    texts->addWidget(title);
    texts->addWidget(subtitle);
    texts->addSpacing(16);
    texts->addLayout(facts);
    texts->addStretch();

    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(22);
    row->addWidget(m_picture, 0, Qt::AlignTop);
    row->addLayout(texts, 1);
}

void AboutPanel::Form_Load() {
    reported(m_formName + QStringLiteral(".Form_Load()"), this, [&] {
        m_version->setText(Version::program());
        // Start-up reads the addresses once for every window; a window made before the
        // folders are known shows none until it loads again.
        Session& s = session();
        if (s.links == Links{} && !s.folders.appPath.isEmpty())
            s.links = Links::read(s.folders.linksFile());
        const Links& links = s.links;
        QString site = links.siteFor(s.currentLanguage);
        if (site.isEmpty())
            site = links.siteFor(u"English");
        for (const QString& candidate : links.sites) {
            if (site.isEmpty())
                site = candidate;
        }
        const QUrl url(site);
        m_site->setText(url.host().isEmpty() ? site : url.host() + url.path());
        m_site->setToolTip(site);
        m_mail->setText(links.support);
        m_siteCaption->setVisible(!site.isEmpty());
        m_site->setVisible(!site.isEmpty());
        m_mailCaption->setVisible(!links.support.isEmpty());
        m_mail->setVisible(!links.support.isEmpty());
    });
}

void AboutPanel::Link_Click() {
    reported(m_formName + QStringLiteral(".Link_Click()"), this, [&] {
        const QString site = session().links.siteFor(session().currentLanguage);
        if (!site.isEmpty())
            dialogs().open(window(), site);
    });
}

void AboutPanel::MailTo_Click() {
    reported(m_formName + QStringLiteral(".MailTo_Click()"), this, [&] {
        if (!m_mail->text().isEmpty())
            dialogs().open(window(), QStringLiteral("mailto:") + m_mail->text());
    });
}

} // namespace quillora::gui
