#include "gui/tools/frmTemplate.h"

#include "gui/app/Reported.h"
#include "gui/app/Session.h"

#include <QHBoxLayout>
#include <QImageReader>
#include <QLabel>
#include <QListWidget>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

namespace quillora::gui {

namespace {

constexpr int kThumbWidth = 110;
constexpr int kThumbHeight = 150;

// The thumbnail at the list's width with its running number above it, in the list's blue.
QIcon numberedThumbnail(const QString& path, int number) {
    QImageReader reader(path);
    reader.setAutoTransform(true);
    const QSize full = reader.size();
    if (full.isValid() && full.width() > 0)
        reader.setScaledSize(QSize(kThumbWidth, full.height() * kThumbWidth / full.width()));
    const QImage image = reader.read();
    QPixmap canvas(kThumbWidth, kThumbHeight + 22);
    canvas.fill(Qt::transparent);
    QPainter p(&canvas);
    p.setRenderHint(QPainter::Antialiasing);
    QFont bold = p.font();
    bold.setBold(true);
    p.setFont(bold);
    p.setPen(QColor(0x1e, 0x90, 0xff)); // DodgerBlue
    p.drawText(QRect(0, 0, kThumbWidth, 18), Qt::AlignCenter, QString::number(number));
    if (!image.isNull())
        p.drawImage(QPoint(0, 22), image, QRect(0, 0, kThumbWidth, kThumbHeight));
    p.setPen(QColor(0xc8, 0xc8, 0xc8));
    p.drawRect(QRectF(0.5, 22.5, kThumbWidth - 1, kThumbHeight - 1));
    p.end();
    return QIcon(canvas);
}

} // namespace

frmTemplate::frmTemplate(std::function<void(const QString&)> importTemplate, QWidget* parent)
    : QDialog(parent), m_importTemplate(std::move(importTemplate)) {
    setObjectName(QStringLiteral("frmTemplate"));
    setWindowTitle(tr("Templates"));
    m_title = new QLabel(tr("Choose a template"), this);
    m_title->setObjectName(QStringLiteral("lblTitolo"));
    QFont big = m_title->font();
    big.setBold(true);
    big.setPointSizeF(big.pointSizeF() * 1.3);
    m_title->setFont(big);
    m_description = new QLabel(tr("Double-click a template to start a new message from it."), this);
    m_description->setObjectName(QStringLiteral("lblDescrizione"));
    m_description->setWordWrap(true);

    m_list = new QListWidget(this);
    m_list->setObjectName(QStringLiteral("lstProf"));
    m_list->setViewMode(QListView::IconMode);
    m_list->setIconSize(QSize(kThumbWidth, kThumbHeight + 22));
    m_list->setGridSize(QSize(kThumbWidth + 24, kThumbHeight + 50));
    m_list->setResizeMode(QListView::Adjust);
    m_list->setMovement(QListView::Static);
    m_list->setUniformItemSizes(true);
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    connect(m_list, &QListWidget::itemDoubleClicked, this, [this] { lstProf_DblClick(); });
    connect(m_list, &QListWidget::itemActivated, this, [this] { lstProf_DblClick(); });
    connect(m_list, &QListWidget::currentRowChanged, this,
            [this](int row) { m_import->setEnabled(row >= 0); });

    m_import = new QPushButton(tr("Import"), this);
    m_import->setObjectName(QStringLiteral("cmdImport"));
    m_import->setDefault(true);
    m_import->setEnabled(false);
    connect(m_import, &QPushButton::clicked, this, [this] { cmdImport_Click(); });
    auto* cancel = new QPushButton(tr("Cancel"), this);
    cancel->setObjectName(QStringLiteral("cmdCancel"));
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_import);
    buttons->addWidget(cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_title);
    layout->addWidget(m_description);
    layout->addWidget(m_list, 1);
    layout->addLayout(buttons);
    resize(4 * (kThumbWidth + 24) + 40, 560);

    m_next.setInterval(0);
    connect(&m_next, &QTimer::timeout, this, &frmTemplate::loadNext);
}

void frmTemplate::Form_Load() {
    reported(QStringLiteral("frmTemplate.Form_Load()"), this, [&] {
        m_list->clear();
        m_number = 0;
        m_pending.clear();
        // A missing category folder simply lists nothing.
        for (const TemplateStore::Entry& e : TemplateStore::listAll(session().folders.appTemplate))
            m_pending.push_back(e);
    });
    if (m_pending.empty()) {
        emit loaded();
        return;
    }
    m_next.start();
}

void frmTemplate::loadNext() {
    if (m_pending.empty()) {
        m_next.stop();
        return;
    }
    const TemplateStore::Entry e = m_pending.front();
    m_pending.pop_front();
    reported(QStringLiteral("frmTemplate.Form_Load()"), this, [&] {
        auto* item =
            new QListWidgetItem(numberedThumbnail(e.thumbnail, ++m_number), e.name, m_list);
        item->setData(Qt::UserRole, e.thumbnail);
        item->setToolTip(e.category + QStringLiteral(" / ") + e.name);
        if (m_list->count() == 1)
            m_list->setCurrentItem(item);
    });
    if (m_pending.empty()) {
        m_next.stop();
        emit loaded();
    }
}

void frmTemplate::choose() {
    const QListWidgetItem* item = m_list->currentItem();
    if (!item)
        return;
    const QString thumbnail = item->data(Qt::UserRole).toString();
    reported(QStringLiteral("frmTemplate.ImportaTemplate()"), this,
             [&] { m_importTemplate(thumbnail); });
    accept();
}

void frmTemplate::lstProf_DblClick() {
    choose();
}

void frmTemplate::cmdImport_Click() {
    choose();
}

} // namespace quillora::gui
