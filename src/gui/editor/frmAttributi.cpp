#include "gui/editor/frmAttributi.h"

#include "core/editor/ElementProperties.h"
#include "gui/app/Dialogs.h"

#include <QCheckBox>
#include <QColor>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QPixmap>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <functional>

namespace quillora::gui {

namespace {

// The Class row asks for its list when it is opened, so the list follows the style sheets.
class ClassCombo : public QComboBox {
public:
    std::function<void()> opening;
    using QComboBox::QComboBox;
    void showPopup() override {
        if (opening)
            opening();
        QComboBox::showPopup();
    }
};

QIcon swatch(const QString& row) {
    QPixmap p(14, 14);
    const auto html = editor::colourRowToHtml(row);
    const QColor c = html && !html->isEmpty() ? QColor(*html) : QColor(row.trimmed());
    if (!c.isValid()) {
        p.fill(Qt::transparent);
    } else {
        p.fill(c);
    }
    return QIcon(p);
}

} // namespace

struct frmAttributi::Row {
    editor::PropertyRow spec;
    QString attribute;
    QString shown; // the value the element had when last shown or written
    QTreeWidgetItem* item = nullptr;
    QLineEdit* text = nullptr;  // Text and Colour rows, and the text of a Choice row
    QComboBox* combo = nullptr; // Choice and Class rows
    QCheckBox* check = nullptr; // YesNo rows
    QToolButton* colour = nullptr;
};

frmAttributi::frmAttributi(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("frmAttributi"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    PROP = new QTreeWidget(this);
    PROP->setObjectName(QStringLiteral("PROP"));
    PROP->setColumnCount(2);
    PROP->setHeaderLabels({tr("Property"), tr("Value")});
    PROP->setRootIsDecorated(false);
    PROP->setAlternatingRowColors(true);
    PROP->setSelectionMode(QAbstractItemView::NoSelection);
    PROP->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    PROP->header()->setStretchLastSection(true);
    layout->addWidget(PROP);
}

void frmAttributi::showElement(const SurfaceState& state) {
    const QString tag = editor::tagGroup(state.propertyTag) == editor::TagGroup::None
                            ? QString()
                            : state.propertyTag;
    if (tag != m_tag || m_order.isEmpty() != tag.isEmpty()) {
        m_tag = tag;
        rebuild(state);
        return;
    }
    for (Row* row : m_order) {
        const QString value = display(*row, state);
        if (value == row->shown)
            continue;
        // What the user is typing stays; the row takes the element's value when left.
        const bool editing =
            (row->text && row->text->hasFocus()) || (row->combo && row->combo->hasFocus());
        if (!editing)
            setShown(*row, value);
    }
}

void frmAttributi::rebuild(const SurfaceState& state) {
    PROP->clear();
    qDeleteAll(m_order);
    m_order.clear();
    m_rows.clear();
    const auto rows = editor::propertyRows(m_tag);
    if (rows.empty())
        return;
    auto* category = new QTreeWidgetItem(PROP, {m_tag});
    category->setFirstColumnSpanned(true);
    QFont bold = category->font(0);
    bold.setBold(true);
    category->setFont(0, bold);
    for (const editor::PropertyRow& spec : rows) {
        auto* row = new Row;
        row->spec = spec;
        row->attribute = QString::fromLatin1(spec.attribute).toLower();
        row->item = new QTreeWidgetItem(category, {QString::fromLatin1(spec.caption)});
        PROP->setItemWidget(row->item, 1, makeEditor(*row));
        setShown(*row, display(*row, state));
        m_order << row;
        m_rows.insert(row->attribute, row);
    }
    PROP->expandAll();
}

// A row's text for the element's value: a yes/no row is "true" when the attribute is there at
// all, a colour row shows "red;green;blue".
QString frmAttributi::display(const Row& row, const SurfaceState& state) {
    const auto found = state.properties.constFind(row.attribute);
    if (row.spec.kind == editor::RowKind::YesNo)
        return found != state.properties.cend() ? QStringLiteral("true") : QString();
    const QString value = found != state.properties.cend() ? *found : QString();
    return row.spec.kind == editor::RowKind::Colour ? editor::htmlToColourRow(value) : value;
}

QWidget* frmAttributi::makeEditor(Row& row) {
    auto* box = new QWidget(PROP);
    auto* layout = new QHBoxLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(1);
    const QString name = QStringLiteral("PROP_") + row.attribute;
    Row* r = &row;
    const auto commit = [this, r](const QString& value) {
        if (value == r->shown)
            return;
        r->shown = value;
        if (r->colour)
            r->colour->setIcon(swatch(value));
        emit rowEdited(QString::fromLatin1(r->spec.attribute), value);
    };
    using editor::RowKind;
    if (row.spec.kind == RowKind::YesNo) {
        row.check = new QCheckBox(box);
        row.check->setObjectName(name);
        connect(row.check, &QCheckBox::clicked, this,
                [commit](bool on) { commit(on ? QStringLiteral("true") : QString()); });
        layout->addWidget(row.check);
        layout->addStretch(1);
        return box;
    }
    const bool isClass = row.attribute == QLatin1String("class");
    if (row.spec.kind == RowKind::Choice || isClass) {
        auto* combo = new ClassCombo(box);
        if (isClass)
            combo->opening = [this] { emit classListWanted(); };
        row.combo = combo;
        row.combo->setEditable(true);
        row.combo->setInsertPolicy(QComboBox::NoInsert);
        row.combo->addItem(QString());
        for (const char* c : row.spec.choices)
            row.combo->addItem(QString::fromLatin1(c));
        row.text = row.combo->lineEdit();
        row.combo->setObjectName(name);
        connect(row.combo, &QComboBox::textActivated, this, commit);
        layout->addWidget(row.combo, 1);
    } else {
        row.text = new QLineEdit(box);
        row.text->setObjectName(name);
        layout->addWidget(row.text, 1);
    }
    QLineEdit* text = row.text;
    connect(text, &QLineEdit::editingFinished, this, [commit, text] { commit(text->text()); });
    if (row.spec.kind == RowKind::Colour) {
        row.colour = new QToolButton(box);
        row.colour->setObjectName(name + QStringLiteral("_colour"));
        row.colour->setToolTip(tr("Choose a colour"));
        connect(row.colour, &QToolButton::clicked, this, [this, r, text, commit] {
            const auto html = editor::colourRowToHtml(text->text());
            const QColor initial = html && !html->isEmpty() ? QColor(*html) : QColor(Qt::white);
            const std::optional<QColor> c =
                dialogs().chooseColor(this, initial, QString::fromLatin1(r->spec.caption));
            if (!c)
                return;
            const QString value =
                QStringLiteral("%1;%2;%3").arg(c->red()).arg(c->green()).arg(c->blue());
            text->setText(value);
            commit(value);
        });
        layout->addWidget(row.colour);
    }
    if (row.spec.fileButtons) {
        for (const QString& caption : {QStringLiteral("..."), QStringLiteral("Edit")}) {
            auto* b = new QToolButton(box);
            b->setText(caption);
            b->setObjectName(name + (caption == QLatin1String("...") ? QStringLiteral("_browse")
                                                                     : QStringLiteral("_edit")));
            connect(b, &QToolButton::clicked, this, [this, r, caption] {
                emit buttonPressed(QString::fromLatin1(r->spec.attribute), caption);
            });
            layout->addWidget(b);
        }
    }
    return box;
}

void frmAttributi::setShown(Row& row, const QString& value) {
    row.shown = value;
    if (row.check)
        row.check->setChecked(!value.isEmpty());
    else if (row.text)
        row.text->setText(value);
    if (row.colour)
        row.colour->setIcon(swatch(value));
}

QString frmAttributi::rowValue(const QString& attribute) const {
    const Row* row = m_rows.value(attribute.toLower());
    return row ? row->shown : QString();
}

void frmAttributi::editRow(const QString& attribute, const QString& value) {
    Row* row = m_rows.value(attribute.toLower());
    if (!row)
        return;
    if (row->check) {
        row->check->setChecked(!value.isEmpty());
    } else if (row->text) {
        row->text->setText(value);
    }
    if (row->shown == value)
        return;
    row->shown = value;
    if (row->colour)
        row->colour->setIcon(swatch(value));
    emit rowEdited(QString::fromLatin1(row->spec.attribute), value);
}

void frmAttributi::setClassList(const QStringList& classes) {
    Row* row = m_rows.value(QStringLiteral("class"));
    if (!row || !row->combo)
        return;
    const QString typed = row->combo->currentText();
    row->combo->clear();
    row->combo->addItem(QString());
    row->combo->addItems(classes);
    row->combo->setEditText(typed);
}

} // namespace quillora::gui
