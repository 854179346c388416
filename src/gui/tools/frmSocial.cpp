#include "gui/tools/frmSocial.h"

#include "core/tools/SocialLinks.h"
#include "gui/app/Reported.h"
#include "gui/app/Session.h"

#include <QCloseEvent>
#include <QComboBox>
#include <QDir>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QPixmap>
#include <QPushButton>
#include <QSet>
#include <QTabWidget>
#include <QToolButton>
#include <QVBoxLayout>

#include <stdexcept>
#include <thread>
#include <vector>

namespace quillora::gui {

namespace {
constexpr int kPerRow = 10;
const char* kTagProperty = "tag";
} // namespace

frmSocial::frmSocial(std::function<void(const QString&)> insertHtml, QWidget* parent)
    : QDialog(parent), m_insertHtml(std::move(insertHtml)) {
    setObjectName(QStringLiteral("frmSocial"));
    setWindowTitle(tr("Social links"));
    // A tool window beside the editor: the user types addresses and inserts while editing.
    setModal(false);

    auto* addresses = new QGroupBox(this);
    auto* grid = new QGridLayout(addresses);
    for (int i = 0; i < SocialLinks::kNetworks; ++i) {
        auto* label = new QLabel(addresses);
        label->setObjectName(QStringLiteral("lblSocial_%1").arg(i));
        auto* box = new QLineEdit(addresses);
        box->setObjectName(QStringLiteral("txtSocial_%1").arg(i));
        box->setPlaceholderText(QStringLiteral("https://"));
        box->setMinimumWidth(260);
        label->setBuddy(box);
        grid->addWidget(label, i, 0);
        grid->addWidget(box, i, 1);
        m_labels << label;
        m_addresses << box;
    }

    m_tabs = new QTabWidget(this);
    m_tabs->setObjectName(QStringLiteral("TB"));
    m_tabs->setUsesScrollButtons(false);
    for (int n = 0; n < SocialLinks::kNetworks; ++n) {
        auto* page = new QWidget(m_tabs);
        auto* icons = new QGridLayout(page);
        icons->setSpacing(4);
        for (int d = 0; d < SocialLinks::kDesigns; ++d) {
            const int index = n * SocialLinks::kDesigns + d;
            auto* button = new QToolButton(page);
            button->setObjectName(QStringLiteral("cmdIcon_%1").arg(index));
            button->setIconSize(QSize(48, 48));
            button->setFixedSize(56, 56);
            button->setAutoRaise(true);
            connect(button, &QToolButton::clicked, this, [this, index] { cmdIcon_Click(index); });
            icons->addWidget(button, d / kPerRow, d % kPerRow);
            m_icons << button;
        }
        const QString name =
            QString::fromLatin1(SocialLinks::networks()[size_t(n)].labelSuffix).trimmed();
        m_tabs->addTab(page, name);
    }

    m_size = new QComboBox(this);
    m_size->setObjectName(QStringLiteral("cmbSize"));
    connect(m_size, &QComboBox::activated, this, [this] { cmbSize_Click(); });
    m_preview = new QLabel(this);
    m_preview->setObjectName(QStringLiteral("tbPreview"));
    m_preview->setFixedSize(72, 72);
    m_preview->setAlignment(Qt::AlignCenter);
    m_preview->setFrameShape(QFrame::StyledPanel);
    m_insert = new QPushButton(tr("Insert link"), this);
    m_insert->setObjectName(QStringLiteral("cmdInsertLink"));
    connect(m_insert, &QPushButton::clicked, this, [this] { cmdInsertLink_Click(); });
    auto* lblSize = new QLabel(tr("Size:"), this);
    lblSize->setObjectName(QStringLiteral("lblSize"));
    lblSize->setBuddy(m_size);

    auto* side = new QVBoxLayout;
    side->addWidget(lblSize);
    side->addWidget(m_size);
    side->addSpacing(8);
    side->addWidget(m_preview, 0, Qt::AlignHCenter);
    side->addStretch(1);
    side->addWidget(m_insert);

    auto* lower = new QHBoxLayout;
    lower->addWidget(m_tabs, 1);
    lower->addLayout(side);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(addresses);
    layout->addLayout(lower, 1);
}

QString frmSocial::addressFile() const {
    return session().folders.pathFileImp + QStringLiteral("Social.dll");
}

void frmSocial::InitializeForm(const std::function<void()>& advance) {
    reported(QStringLiteral("frmSocial.InitializeForm()"), this, [&] {
        m_tabs->setCurrentIndex(0);
        m_size->clear();
        m_size->addItems(SocialLinks::sizes());
        m_size->setCurrentIndex(SocialLinks::kDefaultSize);
        m_size->setEnabled(false);
        m_insert->setEnabled(false);
        const QString prefix = session().texts.get(QStringLiteral("socialIndPage"));
        const QString folder = session().folders.appSocial;
        // The folder is listed once: a missing picture is not asked for, which would try its
        // name with every picture extension Qt knows. The pictures there are decoded on a
        // second thread, half of them, while this one decodes the other half.
        const QStringList listed = QDir(folder).entryList(QDir::Files);
        const QSet<QString> present(listed.begin(), listed.end());
        QStringList names;
        for (int n = 0; n < SocialLinks::kNetworks; ++n) {
            for (int d = 1; d <= SocialLinks::kDesigns; ++d)
                names << SocialLinks::iconFileName(d, QStringLiteral("64x64"), n,
                                                   QStringLiteral(".jpg"));
        }
        std::vector<QImage> pictures(size_t(names.size()));
        const auto decode = [&](qsizetype from, qsizetype to) {
            for (qsizetype i = from; i < to; ++i) {
                if (present.contains(names[i]))
                    pictures[size_t(i)] = QImage(folder + names[i]);
            }
        };
        if (!present.isEmpty()) {
            const qsizetype half = names.size() / 2;
            const std::jthread helper(decode, half, names.size());
            decode(0, half);
        }
        for (int n = 0; n < SocialLinks::kNetworks; ++n) {
            m_labels[n]->setText(
                prefix + QString::fromLatin1(SocialLinks::networks()[size_t(n)].labelSuffix));
            if (advance)
                advance();
            for (int d = 1; d <= SocialLinks::kDesigns; ++d) {
                const int i = n * SocialLinks::kDesigns + d - 1;
                QToolButton* button = m_icons[i];
                // A missing file leaves the button without a picture.
                button->setIcon(QIcon(QPixmap::fromImage(pictures[size_t(i)])));
                button->setProperty(kTagProperty, names[i]);
                button->setToolTip(QStringLiteral("%1 %2").arg(m_tabs->tabText(n)).arg(d));
            }
        }
    });
    ApriLinkSocial();
}

void frmSocial::ApriLinkSocial() {
    reported(QStringLiteral("frmSocial.ApriLinkSocial()"), this, [&] {
        const QStringList lines = SocialLinks::readAddresses(addressFile());
        for (int i = 0; i < lines.size() && i < m_addresses.size(); ++i)
            m_addresses[i]->setText(lines[i]);
    });
}

void frmSocial::SalvaLinkSocial() {
    reported(QStringLiteral("frmSocial.SalvaLinkSocial()"), this, [&] {
        QStringList lines;
        for (QLineEdit* box : m_addresses)
            lines << box->text();
        if (!SocialLinks::writeAddresses(addressFile(), lines))
            throw std::runtime_error(
                QStringLiteral("Cannot write %1").arg(addressFile()).toStdString());
    });
}

void frmSocial::showPreview(const QString& name) {
    m_previewTag = name;
    const QPixmap picture(session().folders.appSocial + name);
    m_preview->setPixmap(picture);
    m_preview->setToolTip(name);
}

void frmSocial::cmdIcon_Click(int index) {
    reported(QStringLiteral("frmSocial.cmdIcon_Click()"), this, [&] {
        m_size->setEnabled(true);
        m_insert->setEnabled(true);
        const QString tag = m_icons.at(index)->property(kTagProperty).toString();
        showPreview(SocialLinks::resized(tag, m_size->currentIndex()));
    });
}

void frmSocial::cmbSize_Click() {
    reported(QStringLiteral("frmSocial.cmbSize_Click()"), this, [&] {
        if (!m_previewTag.isEmpty())
            showPreview(SocialLinks::resized(m_previewTag, m_size->currentIndex()));
    });
}

void frmSocial::cmdInsertLink_Click() {
    SalvaLinkSocial();
    reported(QStringLiteral("frmSocial.cmdInsertLink_Click()"), this, [&] {
        // The selected tab decides the address, the preview decides the icon.
        const QString address = m_addresses.at(m_tabs->currentIndex())->text();
        m_insertHtml(SocialLinks::linkFragment(address, session().folders.appSocial, m_previewTag));
    });
}

void frmSocial::closeEvent(QCloseEvent* event) {
    // Hidden, never destroyed: the next show finds the window as it was left.
    SalvaLinkSocial();
    event->ignore();
    hide();
}

void frmSocial::reject() {
    SalvaLinkSocial();
    hide();
}

} // namespace quillora::gui
