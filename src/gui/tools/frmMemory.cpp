#include "gui/tools/frmMemory.h"

#include "gui/app/Reported.h"
#include "gui/app/Session.h"

#include <QAction>
#include <QDialogButtonBox>
#include <QDrag>
#include <QFormLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPainter>
#include <QPainterPath>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QToolBar>
#include <QVBoxLayout>

namespace quillora::gui {

namespace {

const QString kNew = QStringLiteral("cmdMemoryNew");
const QString kMod = QStringLiteral("cmdMemoryMod");
const QString kDel = QStringLiteral("cmdMemoryDel");
constexpr int kFileRole = Qt::UserRole;

// A sheet with a folded corner and three lines: the picture every snippet row carries.
QIcon snippetIcon() {
    QIcon icon;
    for (int size : {16, 24, 32}) {
        QPixmap pm(size, size);
        pm.fill(Qt::transparent);
        QPainter p(&pm);
        p.setRenderHint(QPainter::Antialiasing);
        const double u = size / 16.0;
        QPainterPath sheet;
        sheet.moveTo(3 * u, 1.5 * u);
        sheet.lineTo(10 * u, 1.5 * u);
        sheet.lineTo(13 * u, 4.5 * u);
        sheet.lineTo(13 * u, 14.5 * u);
        sheet.lineTo(3 * u, 14.5 * u);
        sheet.closeSubpath();
        p.fillPath(sheet, QColor("#fff6d5"));
        p.strokePath(sheet, QPen(QColor("#b8860b"), u));
        p.setPen(QPen(QColor("#7a5c00"), u));
        for (double y : {6.0, 8.5, 11.0})
            p.drawLine(QPointF(5 * u, y * u), QPointF(11 * u, y * u));
        p.end();
        icon.addPixmap(pm);
    }
    return icon;
}

// A plus, a pencil or a cross, drawn so that it stays sharp at any scale.
QIcon commandIcon(int kind) {
    QIcon icon;
    for (int size : {16, 24, 32}) {
        QPixmap pm(size, size);
        pm.fill(Qt::transparent);
        QPainter p(&pm);
        p.setRenderHint(QPainter::Antialiasing);
        const QColor colour(kind == 0 ? "#2f6fde" : kind == 1 ? "#4a7f2b" : "#c0392b");
        p.setPen(QPen(colour, size / 8.0, Qt::SolidLine, Qt::RoundCap));
        const double m = size * 0.22, e = size - m, c = size / 2.0;
        if (kind == 0) {
            p.drawLine(QPointF(m, c), QPointF(e, c));
            p.drawLine(QPointF(c, m), QPointF(c, e));
        } else if (kind == 1) {
            p.drawLine(QPointF(m, e), QPointF(e, m));
            p.drawLine(QPointF(m, e), QPointF(m + size * 0.15, e));
        } else {
            p.drawLine(QPointF(m, m), QPointF(e, e));
            p.drawLine(QPointF(m, e), QPointF(e, m));
        }
        p.end();
        icon.addPixmap(pm);
    }
    return icon;
}

} // namespace

MemoryList::MemoryList(QWidget* parent) : QTreeWidget(parent) {
    setObjectName(QStringLiteral("LIST"));
    setDragEnabled(true);
    setDragDropMode(QAbstractItemView::DragOnly);
}

const QString& MemoryList::mimeType() {
    static const QString type = QStringLiteral("application/x-quillora-frmMemory-LIST");
    return type;
}

bool MemoryList::fromSnippetList(const QMimeData* data) {
    return data && data->hasFormat(mimeType());
}

void MemoryList::startDrag(Qt::DropActions) {
    QTreeWidgetItem* item = currentItem();
    if (!item)
        return;
    auto* data = new QMimeData;
    // The page takes the snippet from the current row; the marker names the source.
    data->setData(mimeType(), QByteArrayLiteral("frmMemory.LIST"));
    auto* drag = new QDrag(this);
    drag->setMimeData(data);
    drag->setPixmap(item->icon(0).pixmap(16, 16));
    drag->exec(Qt::CopyAction);
}

frmMemory::frmMemory(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("frmMemory"));
    m_bar = new QToolBar(this);
    m_bar->setObjectName(QStringLiteral("TbMemory"));
    m_bar->setIconSize(QSize(16, 16));
    m_bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_bar->setMovable(false);
    m_new = m_bar->addAction(commandIcon(0), tr("New"));
    m_new->setObjectName(kNew);
    m_new->setToolTip(tr("Store a new snippet"));
    m_mod = m_bar->addAction(commandIcon(1), tr("Change"));
    m_mod->setObjectName(kMod);
    m_mod->setToolTip(tr("Change the selected snippet"));
    m_del = m_bar->addAction(commandIcon(2), tr("Delete"));
    m_del->setObjectName(kDel);
    m_del->setToolTip(tr("Delete the selected snippet"));
    for (QAction* a : {m_new, m_mod, m_del})
        connect(a, &QAction::triggered, this, [this, a] { Dks_CommandClick(a->objectName()); });

    m_list = new MemoryList(this);
    m_list->setColumnCount(1);
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->header()->setStretchLastSection(true);
    m_list->viewport()->setMouseTracking(true);
    m_list->viewport()->installEventFilter(this);
    m_list->installEventFilter(this);
    connect(m_list, &QTreeWidget::itemDoubleClicked, this, [this] { LIST_DblClick(); });

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_bar);
    column->addWidget(m_list, 1);
    IniList();
}

frmMemory::~frmMemory() = default;

SnippetStore frmMemory::store() const {
    return SnippetStore(session().folders.appMemory);
}

void frmMemory::IniList() {
    // File errors never show here: an unreadable snippet simply lists untitled.
    m_list->clear();
    m_list->setHeaderLabels({QStringLiteral("Memory")});
    CaricaMemory();
    CheckButton();
}

void frmMemory::CaricaMemory() {
    static const QIcon icon = snippetIcon();
    for (const SnippetRow& row : store().list()) {
        auto* item = new QTreeWidgetItem(m_list, {row.title});
        item->setIcon(0, icon);
        item->setData(0, kFileRole, row.fileName);
    }
}

void frmMemory::ClearList() {
    IniList();
    CheckButton();
}

void frmMemory::CheckButton() {
    reported(QStringLiteral("frmMemory.CheckButton()"), this, [&] {
        const bool any = m_list->topLevelItemCount() > 0;
        m_mod->setEnabled(any);
        m_del->setEnabled(any);
    });
}

void frmMemory::InsMemory(const QString& title, const QString& text) {
    static const QIcon icon = snippetIcon();
    auto* item = new QTreeWidgetItem(m_list, {title});
    item->setIcon(0, icon);
    const QString name = store().add(title, text);
    item->setData(0, kFileRole, name);
    m_list->setCurrentItem(item);
    CheckButton();
}

void frmMemory::ModMemory(const QString& title, const QString& text) {
    QTreeWidgetItem* item = m_list->currentItem();
    if (!item)
        return;
    item->setText(0, title);
    store().ModifyMemory(item->data(0, kFileRole).toString(), title, text);
}

void frmMemory::DelMemory() {
    if (QTreeWidgetItem* item = m_list->currentItem()) {
        store().remove(item->data(0, kFileRole).toString());
        delete item;
    }
    CheckButton();
}

void frmMemory::Dks_CommandClick(const QString& id) {
    reported(QStringLiteral("frmMain.Dks_CommandClick()"), this, [&] {
        if (id == kNew)
            showEntryForm(false);
        else if (id == kMod && m_list->currentItem())
            showEntryForm(true);
        else if (id == kDel)
            DelMemory();
    });
}

void frmMemory::LIST_DblClick() {
    if (m_list->currentItem())
        showEntryForm(true);
}

frmMemoryPop* frmMemory::entryForm() {
    if (!m_pop) {
        m_pop = new frmMemoryPop(this, window());
    }
    return m_pop;
}

void frmMemory::showEntryForm(bool modify) {
    frmMemoryPop* pop = entryForm();
    pop->Modifica = modify;
    if (modify)
        pop->NomeFile = currentFileName();
    // Modal over the main window, without a nested event loop.
    pop->setWindowModality(Qt::ApplicationModal);
    if (pop->isVisible())
        pop->Form_Activate();
    pop->show();
    pop->raise();
    pop->activateWindow();
}

QString frmMemory::currentFileName() const {
    const QTreeWidgetItem* item = m_list->currentItem();
    return item ? item->data(0, kFileRole).toString() : QString();
}

QString frmMemory::currentDropHtml() const {
    const QString name = currentFileName();
    if (name.isEmpty())
        return QString();
    const std::optional<SnippetStore::Snippet> s = store().read(name);
    return s ? SnippetStore::dropHtml(s->text) : QString();
}

QAction* frmMemory::command(const QString& id) const {
    return id == kNew ? m_new : id == kMod ? m_mod : id == kDel ? m_del : nullptr;
}

bool frmMemory::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_list->viewport() && event->type() == QEvent::MouseMove) {
        emit helpText(QStringLiteral("Memory"));
    } else if (watched == m_list && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if ((key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) &&
            m_list->currentItem()) {
            const QString html = currentDropHtml();
            if (!html.isEmpty())
                emit insertRequested(html);
            return true;
        }
        if (key->key() == Qt::Key_Delete && key->modifiers() == Qt::NoModifier) {
            Dks_CommandClick(kDel);
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

frmMemoryPop::frmMemoryPop(frmMemory* owner, QWidget* parent) : QDialog(parent), m_owner(owner) {
    setObjectName(QStringLiteral("frmMemoryPop"));
    setWindowTitle(tr("Snippet"));
    auto* lbl = new QLabel(tr("Name:"), this);
    lbl->setObjectName(QStringLiteral("lbl"));
    m_name = new QLineEdit(this);
    m_name->setObjectName(QStringLiteral("txtNome"));
    auto* lbl2 = new QLabel(tr("Text:"), this);
    lbl2->setObjectName(QStringLiteral("lbl2"));
    m_text = new QPlainTextEdit(this);
    m_text->setObjectName(QStringLiteral("txtMemory"));
    m_text->setTabChangesFocus(true);
    lbl->setBuddy(m_name);
    lbl2->setBuddy(m_text);
    m_ok = new QPushButton(tr("OK"), this);
    m_ok->setObjectName(QStringLiteral("cmdOK"));
    m_ok->setDefault(true);
    auto* cancel = new QPushButton(tr("Cancel"), this);
    cancel->setObjectName(QStringLiteral("cmdCancel"));
    auto* buttons = new QDialogButtonBox(this);
    buttons->addButton(m_ok, QDialogButtonBox::AcceptRole);
    buttons->addButton(cancel, QDialogButtonBox::RejectRole);
    connect(m_ok, &QPushButton::clicked, this, &frmMemoryPop::cmdOK_Click);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(lbl);
    layout->addWidget(m_name);
    layout->addWidget(lbl2);
    layout->addWidget(m_text, 1);
    layout->addWidget(buttons);
    resize(420, 320);
}

void frmMemoryPop::showEvent(QShowEvent* event) {
    Form_Activate();
    QDialog::showEvent(event);
}

void frmMemoryPop::Form_Activate() {
    m_name->clear();
    m_text->clear();
    if (Modifica) {
        const auto s = SnippetStore(session().folders.appMemory).read(NomeFile);
        if (s) {
            m_name->setText(s->title);
            m_text->setPlainText(s->text);
        }
    }
    m_name->setFocus();
}

void frmMemoryPop::cmdOK_Click() {
    reported(QStringLiteral("frmMemoryPop.cmdOK_Click()"), this, [&] {
        // The text box keeps line ends as LF; a snippet keeps them as CR LF.
        const QString text = SnippetStore::typedText(m_text->toPlainText());
        if (Modifica)
            m_owner->ModMemory(m_name->text(), text);
        else
            m_owner->InsMemory(m_name->text(), text);
    });
    accept();
}

} // namespace quillora::gui
