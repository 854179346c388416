#include "gui/message/frmAllegati.h"

#include "core/message/AttachmentList.h"
#include "gui/app/Dialogs.h"
#include "gui/app/Reported.h"

#include <QAction>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileIconProvider>
#include <QFileInfo>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
#include <QToolBar>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace quillora::gui {

namespace {

enum Column { kName = 0, kSize = 1, kPath = 2 };

const QString kAdd = QStringLiteral("cmdAllegatiNew");
const QString kRemove = QStringLiteral("cmdAllegatiDel");

// A plus or a minus, drawn so that it stays sharp at any scale.
QIcon glyphIcon(bool plus) {
    QIcon icon;
    for (int size : {16, 24, 32}) {
        QPixmap pm(size, size);
        pm.fill(Qt::transparent);
        QPainter p(&pm);
        p.setRenderHint(QPainter::Antialiasing);
        p.setPen(
            QPen(QColor(plus ? "#2f6fde" : "#c0392b"), size / 8.0, Qt::SolidLine, Qt::RoundCap));
        const double m = size * 0.22;
        p.drawLine(QPointF(m, size / 2.0), QPointF(size - m, size / 2.0));
        if (plus)
            p.drawLine(QPointF(size / 2.0, m), QPointF(size / 2.0, size - m));
        p.end();
        icon.addPixmap(pm);
    }
    return icon;
}

QStringList droppedFiles(const QMimeData* data) {
    QStringList files;
    if (!data || !data->hasUrls())
        return files;
    for (const QUrl& url : data->urls()) {
        if (url.isLocalFile() && QFileInfo(url.toLocalFile()).isFile())
            files << url.toLocalFile();
    }
    return files;
}

} // namespace

frmAllegati::frmAllegati(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("frmAllegati"));
    setAcceptDrops(true);
    m_helpText = tr("Files sent with the message: add them with Add or drop them here.");

    m_bar = new QToolBar(this);
    m_bar->setObjectName(QStringLiteral("TbAllegati"));
    m_bar->setIconSize(QSize(16, 16));
    m_bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_bar->setMovable(false);
    m_add = m_bar->addAction(glyphIcon(true), tr("Add"));
    m_add->setObjectName(kAdd);
    m_add->setToolTip(tr("Add an attachment"));
    m_remove = m_bar->addAction(glyphIcon(false), tr("Remove"));
    m_remove->setObjectName(kRemove);
    m_remove->setToolTip(tr("Remove the selected attachment"));
    for (QAction* a : {m_add, m_remove}) {
        connect(a, &QAction::triggered, this, [this, a] { Dks_CommandClick(a->objectName()); });
    }

    m_list = new QTreeWidget(this);
    m_list->setObjectName(QStringLiteral("LIST"));
    m_list->setColumnCount(3);
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->setAlternatingRowColors(true);
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->setTextElideMode(Qt::ElideMiddle);
    // Drops are the pane's: the list itself must not take them as row moves.
    m_list->setAcceptDrops(false);
    m_list->viewport()->setAcceptDrops(false);
    m_list->viewport()->setMouseTracking(true);
    m_list->viewport()->installEventFilter(this);
    m_list->installEventFilter(this);
    QHeaderView* header = m_list->header();
    header->setStretchLastSection(true);
    header->setSectionsMovable(false);
    header->resizeSection(kName, 130);
    header->resizeSection(kSize, 76);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_bar);
    column->addWidget(m_list, 1);
    Form_Load();
}

void frmAllegati::Form_Load() {
    reported(QStringLiteral("frmAllegati.Form_Load()"), this, [&] {
        IniList();
        CheckButton();
    });
}

void frmAllegati::IniList() {
    reported(QStringLiteral("frmAllegati.IniList()"), this, [&] {
        m_list->clear();
        m_list->setHeaderLabels(
            {QStringLiteral("File"), QStringLiteral("Size"), QStringLiteral("Temporary Path")});
        m_list->headerItem()->setTextAlignment(kSize, Qt::AlignRight | Qt::AlignVCenter);
    });
}

void frmAllegati::InsFile(const QString& path) {
    reported(QStringLiteral("frmAllegati.InsFile()"), this, [&] {
        const AttachmentList::Row row = AttachmentList::rowFor(path);
        auto* item = new QTreeWidgetItem(m_list, {row.name, row.size, row.path});
        static const QFileIconProvider icons;
        item->setIcon(kName, icons.icon(QFileInfo(path)));
        item->setTextAlignment(kName, Qt::AlignLeft | Qt::AlignVCenter);
        item->setTextAlignment(kSize, Qt::AlignRight | Qt::AlignVCenter);
        item->setTextAlignment(kPath, Qt::AlignLeft | Qt::AlignVCenter);
        item->setToolTip(kName, row.path);
        item->setToolTip(kPath, row.path);
        // The row just added is the one a following Remove takes.
        m_list->setCurrentItem(item);
    });
    CheckButton();
}

void frmAllegati::ClearList() {
    IniList();
    CheckButton();
}

void frmAllegati::CheckButton() {
    reported(QStringLiteral("frmAllegati.CheckButton()"), this,
             [&] { m_remove->setEnabled(AttachmentList::canRemove(m_list->topLevelItemCount())); });
}

void frmAllegati::Dks_CommandClick(const QString& id) {
    reported(QStringLiteral("frmAllegati.Dks_CommandClick()"), this, [&] {
        if (id == kAdd)
            addFromDialog();
        else if (id == kRemove)
            removeCurrentRow();
    });
}

void frmAllegati::addFromDialog() {
    const QString title = QStringLiteral("Inserisci allegato");
    const QString file =
        dialogs().openFileName(this, title, QStringLiteral("Tutti i file(*.*)|*.*"));
    if (file.isEmpty())
        return;
    InsFile(file);
    emit modified();
    CheckButton();
}

void frmAllegati::removeCurrentRow() {
    const int rows = m_list->topLevelItemCount();
    if (!AttachmentList::canRemove(rows))
        return;
    QTreeWidgetItem* item = m_list->currentItem();
    // The grid always had a current row; without one the last row is it.
    if (!item)
        item = m_list->topLevelItem(rows - 1);
    delete item;
    emit modified();
    CheckButton();
}

QStringList frmAllegati::paths() const {
    QStringList out;
    for (int i = 0; i < m_list->topLevelItemCount(); ++i)
        out << m_list->topLevelItem(i)->text(kPath);
    return out;
}

void frmAllegati::setPaths(const QStringList& paths) {
    IniList();
    for (const QString& p : paths)
        InsFile(p);
    CheckButton();
}

void frmAllegati::setHelpText(const QString& text) {
    m_helpText = text;
}

QAction* frmAllegati::command(const QString& id) const {
    return id == kAdd ? m_add : id == kRemove ? m_remove : nullptr;
}

bool frmAllegati::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_list->viewport() && event->type() == QEvent::MouseMove) {
        emit helpText(m_helpText);
    } else if (watched == m_list && event->type() == QEvent::KeyPress &&
               static_cast<QKeyEvent*>(event)->key() == Qt::Key_Delete &&
               static_cast<QKeyEvent*>(event)->modifiers() == Qt::NoModifier) {
        Dks_CommandClick(kRemove);
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void frmAllegati::dragEnterEvent(QDragEnterEvent* event) {
    if (!droppedFiles(event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void frmAllegati::dragMoveEvent(QDragMoveEvent* event) {
    if (!droppedFiles(event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void frmAllegati::dropEvent(QDropEvent* event) {
    const QStringList files = droppedFiles(event->mimeData());
    if (files.isEmpty())
        return;
    event->acceptProposedAction();
    reported(QStringLiteral("frmAllegati.dropEvent()"), this, [&] {
        for (const QString& file : files) {
            InsFile(file);
            emit modified();
        }
    });
}

} // namespace quillora::gui
