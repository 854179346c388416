#include "gui/message/frmPropBody.h"

#include "core/app/bFunctions.h"
#include "gui/app/Dialogs.h"

#include <QCloseEvent>
#include <QColor>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPixmap>
#include <QPushButton>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>

namespace quillora::gui {

namespace {

QColor qcolour(qint32 rgb) {
    return QColor(rgb & 0xff, (rgb >> 8) & 0xff, (rgb >> 16) & 0xff);
}

} // namespace

frmPropBody::frmPropBody(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmPropBody"));
    setWindowTitle(QStringLiteral("Page properties"));
    setModal(true);
    auto* layout = new QVBoxLayout(this);
    auto* lbl =
        new QLabel(QStringLiteral("Margins, colours and background image of the message."), this);
    lbl->setObjectName(QStringLiteral("lbl"));
    lbl->setWordWrap(true);
    layout->addWidget(lbl);

    auto label = [](QWidget* parent, const char* name, const char* text) {
        auto* l = new QLabel(QString::fromUtf8(text), parent);
        l->setObjectName(QString::fromLatin1(name));
        return l;
    };
    auto* margins = new QGroupBox(QStringLiteral("Margins"), this);
    margins->setObjectName(QStringLiteral("grpMargini"));
    auto* marginForm = new QFormLayout(margins);
    auto field = [&](const char* name, const char* labelName, const char* caption) {
        auto* e = new QLineEdit(margins);
        e->setObjectName(QString::fromLatin1(name));
        e->setMaximumWidth(90);
        e->installEventFilter(this);
        auto* row = new QHBoxLayout;
        row->addWidget(e);
        row->addWidget(new QLabel(QStringLiteral("px"), margins));
        row->addStretch(1);
        QLabel* l = label(margins, labelName, caption);
        l->setBuddy(e);
        marginForm->addRow(l, row);
        return e;
    };
    txtSx = field("txtSx", "lblSx", "Left:");
    txtUp = field("txtUp", "lblUp", "Top:");
    txtWd = field("txtWd", "lblWd", "Width:");
    txtHg = field("txtHg", "lblHg", "Height:");

    auto* colours = new QGroupBox(QStringLiteral("Colours"), this);
    colours->setObjectName(QStringLiteral("grpColori"));
    auto* colourForm = new QFormLayout(colours);
    struct ColourControl {
        const char* name;
        const char* labelName;
        const char* caption;
    };
    constexpr ColourControl kControls[BodyProperties::ColourCount] = {
        {"colSfondo", "lblSfondo", "Background:"},
        {"colTesto", "lblTesto", "Text:"},
        {"colLink", "lblLink", "Links:"},
        {"colLinkAttivi", "lblLinkAttivi", "Active links:"},
        {"colLinkVisitati", "lblLinkVisitati", "Visited links:"},
    };
    for (int c = 0; c < BodyProperties::ColourCount; ++c) {
        auto* b = new QPushButton(colours);
        b->setObjectName(QString::fromLatin1(kControls[c].name));
        b->setMinimumWidth(110);
        QLabel* l = label(colours, kControls[c].labelName, kControls[c].caption);
        l->setBuddy(b);
        colourForm->addRow(l, b);
        m_colourButtons[c] = b;
        connect(b, &QPushButton::clicked, this, [this, c, l] {
            const auto chosen = dialogs().chooseColor(this, qcolour(m_colours[c]),
                                                      l->text().remove(u':').remove(u'&'));
            if (chosen)
                setColour(BodyProperties::Colour(c),
                          chosen->red() | (chosen->green() << 8) | (chosen->blue() << 16));
        });
    }

    auto* images = new QGroupBox(QStringLiteral("Images"), this);
    images->setObjectName(QStringLiteral("grpImmagini"));
    auto* imageRow = new QHBoxLayout(images);
    QLabel* imageLabel = label(images, "lblImmagineSfondo", "Background image:");
    txtImmagineSfondo = new QLineEdit(images);
    txtImmagineSfondo->setObjectName(QStringLiteral("txtImmagineSfondo"));
    txtImmagineSfondo->setMinimumWidth(220);
    imageLabel->setBuddy(txtImmagineSfondo);
    auto* browse = new QToolButton(images);
    browse->setObjectName(QStringLiteral("cmdApriImmagine"));
    browse->setText(QStringLiteral("..."));
    connect(browse, &QToolButton::clicked, this, &frmPropBody::cmdApriImmagine_Click);
    imageRow->addWidget(imageLabel);
    imageRow->addWidget(txtImmagineSfondo, 1);
    imageRow->addWidget(browse);

    auto* top = new QHBoxLayout;
    top->addWidget(margins);
    top->addWidget(colours);
    layout->addLayout(top);
    layout->addWidget(images);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    auto* save = new QPushButton(QStringLiteral("&Save"), this);
    save->setObjectName(QStringLiteral("cdmSalva"));
    save->setDefault(true);
    connect(save, &QPushButton::clicked, this, &frmPropBody::cdmSalva_Click);
    buttons->addWidget(save);
    layout->addLayout(buttons);
}

void frmPropBody::setColour(BodyProperties::Colour c, qint32 rgb) {
    m_colours[c] = rgb;
    QPixmap p(28, 14);
    p.fill(qcolour(rgb));
    m_colourButtons[c]->setIcon(QIcon(p));
    m_colourButtons[c]->setText(bFunctions::RGBtoHTML(rgb));
}

void frmPropBody::PrendiValori(const BodyProperties::Values& v) {
    txtSx->setText(v.leftMargin);
    txtUp->setText(v.topMargin);
    txtWd->setText(v.marginWidth);
    txtHg->setText(v.marginHeight);
    txtImmagineSfondo->setText(v.background);
    for (int c = 0; c < BodyProperties::ColourCount; ++c)
        setColour(BodyProperties::Colour(c), v.colours[c]);
}

BodyProperties::Values frmPropBody::values() const {
    BodyProperties::Values v;
    v.leftMargin = txtSx->text();
    v.topMargin = txtUp->text();
    v.marginWidth = txtWd->text();
    v.marginHeight = txtHg->text();
    v.background = txtImmagineSfondo->text();
    for (int c = 0; c < BodyProperties::ColourCount; ++c)
        v.colours[c] = m_colours[c];
    return v;
}

void frmPropBody::cdmSalva_Click() {
    const BodyProperties::Values v = values();
    hide();
    emit saved(v);
}

void frmPropBody::cmdApriImmagine_Click() {
    const QString file =
        dialogs().openFileName(this, QStringLiteral("Background image"),
                               QStringLiteral("Web image type|*.gif;*.jpg;*.png|"));
    if (!file.isEmpty())
        txtImmagineSfondo->setText(file);
}

bool frmPropBody::eventFilter(QObject* watched, QEvent* event) {
    // A margin box selects its whole text when it gets the focus, so typing replaces it; after
    // the focus event, or the click that brought the focus would place the cursor instead.
    if (event->type() == QEvent::FocusIn) {
        if (auto* e = qobject_cast<QLineEdit*>(watched))
            QTimer::singleShot(0, e, &QLineEdit::selectAll);
    }
    return QDialog::eventFilter(watched, event);
}

void frmPropBody::closeEvent(QCloseEvent* event) {
    event->ignore();
    hide();
}

} // namespace quillora::gui
