#include "gui/app/frmMessage.h"

#include "gui/app/Dialogs.h"
#include "gui/app/LanguageApplier.h"
#include "gui/app/ProgramIcon.h"
#include "gui/app/Reported.h"
#include "gui/app/Session.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

namespace quillora::gui {

namespace mm = quillora::bMessage;

namespace {

// The key of the last question box and what the last box showed: one box is up at a time.
struct LastBox {
    QString messageKey;
    MessageRequest request;
};

LastBox& last() {
    static LastBox l;
    return l;
}

constexpr int kMainIconSize = 32;
constexpr int kFooterIconSize = 16;

QWidget* mainWindow() {
    for (QWidget* w : QApplication::topLevelWidgets()) {
        if (w->objectName() == u"frmMain")
            return w;
    }
    return nullptr;
}

QPixmap iconPixmap(const QStyle* style, int icon, int size) {
    QStyle::StandardPixmap standard;
    switch (icon) {
    case mm::kIconInformation:
        standard = QStyle::SP_MessageBoxInformation;
        break;
    case mm::kIconWarning:
        standard = QStyle::SP_MessageBoxWarning;
        break;
    case mm::kIconError:
        standard = QStyle::SP_MessageBoxCritical;
        break;
    case mm::kIconQuestion:
        standard = QStyle::SP_MessageBoxQuestion;
        break;
    case mm::kIconShield: {
        // Only some styles draw a shield; a warning says the same.
        const QIcon shield = style->standardIcon(QStyle::SP_VistaShield);
        standard = shield.isNull() ? QStyle::SP_MessageBoxWarning : QStyle::SP_VistaShield;
        break;
    }
    case mm::kIconProgram:
        return programPixmap(size);
    default:
        return {};
    }
    return style->standardIcon(standard).pixmap(size, size);
}

QFont areaFont(const mm::TextBlock& block) {
    QFont font = QApplication::font();
    // The boxes are designed for Open Sans; without it the desktop's own font reads best.
    if (!block.fontFamily.isEmpty() && QFontDatabase::hasFamily(block.fontFamily))
        font.setFamily(block.fontFamily);
    if (block.pointSize > 0)
        font.setPointSizeF(block.pointSize);
    font.setBold(block.bold);
    return font;
}

QString html(const mm::TextBlock& block) {
    QString out = QStringLiteral("<div style=\"white-space:pre-wrap\">");
    for (const mm::TextRun& run : block.runs) {
        QString text = run.text.toHtmlEscaped();
        text.replace(u'\n', QStringLiteral("<br>"));
        if (run.link.isEmpty())
            out += text;
        else
            out += QStringLiteral("<a href=\"%1\" style=\"color:#1f5fd1\">%2</a>")
                       .arg(run.link.toHtmlEscaped(), text);
    }
    return out + QStringLiteral("</div>");
}

QString buttonCaption(int id) {
    switch (id) {
    case kIdYes:
        return QObject::tr("Yes");
    case kIdNo:
        return QObject::tr("No");
    case kIdRestore:
        return QObject::tr("&Restore");
    case kIdSaveElsewhere:
        return QObject::tr("&Save elsewhere...");
    case kIdDiscard:
        return QObject::tr("&Discard");
    default:
        return QObject::tr("OK");
    }
}

QString buttonName(int id) {
    switch (id) {
    case kIdYes:
        return QStringLiteral("cmdYes");
    case kIdNo:
        return QStringLiteral("cmdNo");
    case kIdRestore:
        return QStringLiteral("cmdRipristina");
    case kIdSaveElsewhere:
        return QStringLiteral("cmdSalvaAltrove");
    case kIdDiscard:
        return QStringLiteral("cmdScarta");
    default:
        return QStringLiteral("cmdOK");
    }
}

const char* kStyleSheet = R"(
QWidget#fraBody { background: #ffffff; }
QLabel#lblInstruction { color: #1b3f7a; }
QLabel#lblContent { color: #202428; }
QWidget#fraButtons { background: #f3f5f8; border-top: 1px solid #dde2ea; }
QWidget#fraFooter { background: #f3f5f8; border-top: 1px solid #dde2ea; }
QLabel#lblFooter { color: #3a4048; }
QPushButton { min-width: 76px; padding: 4px 14px; }
)";

int runBox(frmMessage& box, const QString& key) {
    MessageRequest request = box.request();
    request.key = key;
    request.box = &box;
    const int id = dialogs().answer(request);
    // An answer given without the box's own buttons (a scripted run) still carries out its
    // action, once.
    if (!box.answered() && request.buttons.contains(id))
        box.TSK_ButtonClicked(id);
    request.box = nullptr;
    last().request = request;
    return id;
}

} // namespace

frmMessage::frmMessage(QWidget* owner) : QDialog(owner) {
    setObjectName(QStringLiteral("frmMessage"));
    setWindowIcon(programIcon());
    setStyleSheet(QString::fromLatin1(kStyleSheet));

    auto* body = new QWidget(this);
    body->setObjectName(QStringLiteral("fraBody"));
    body->setAttribute(Qt::WA_StyledBackground);
    m_mainIcon = new QLabel(body);
    m_mainIcon->setObjectName(QStringLiteral("picMainIcon"));
    m_mainIcon->setFixedSize(kMainIconSize, kMainIconSize);
    m_instruction = makeArea("lblInstruction");
    m_content = makeArea("lblContent");
    auto* texts = new QVBoxLayout;
    texts->setSpacing(10);
    texts->addWidget(m_instruction);
    texts->addWidget(m_content);
    texts->addStretch();
    auto* bodyRow = new QHBoxLayout(body);
    bodyRow->setContentsMargins(18, 18, 22, 20);
    bodyRow->setSpacing(14);
    bodyRow->addWidget(m_mainIcon, 0, Qt::AlignTop);
    bodyRow->addLayout(texts, 1);

    auto* buttons = new QWidget(this);
    buttons->setObjectName(QStringLiteral("fraButtons"));
    buttons->setAttribute(Qt::WA_StyledBackground);
    m_buttonRow = new QHBoxLayout(buttons);
    m_buttonRow->setContentsMargins(18, 10, 14, 10);
    m_buttonRow->setSpacing(8);
    m_buttonRow->addStretch();

    m_footerArea = new QWidget(this);
    m_footerArea->setObjectName(QStringLiteral("fraFooter"));
    m_footerArea->setAttribute(Qt::WA_StyledBackground);
    m_footerIcon = new QLabel(m_footerArea);
    m_footerIcon->setObjectName(QStringLiteral("picFooterIcon"));
    m_footerIcon->setFixedSize(kFooterIconSize, kFooterIconSize);
    m_footer = makeArea("lblFooter");
    m_footer->setParent(m_footerArea);
    auto* footerRow = new QHBoxLayout(m_footerArea);
    footerRow->setContentsMargins(18, 9, 22, 11);
    footerRow->setSpacing(8);
    footerRow->addWidget(m_footerIcon, 0, Qt::AlignTop);
    footerRow->addWidget(m_footer, 1);
    m_footerArea->hide();

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(body, 1);
    column->addWidget(buttons);
    column->addWidget(m_footerArea);
    column->setSizeConstraint(QLayout::SetFixedSize);
}

QLabel* frmMessage::makeArea(const char* name) {
    auto* label = new QLabel(this);
    label->setObjectName(QString::fromLatin1(name));
    label->setTextFormat(Qt::RichText);
    label->setWordWrap(true);
    // Wide enough for a sentence per line, narrow enough to read.
    label->setMinimumWidth(400);
    label->setMaximumWidth(520);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::LinksAccessibleByMouse);
    label->setOpenExternalLinks(false);
    connect(label, &QLabel::linkActivated, this, &frmMessage::TSK_HyperlinkClicked);
    return label;
}

void frmMessage::showArea(QLabel* label, const QString& markup, QString& shown) {
    const mm::TextBlock block = mm::parseTextBlock(markup);
    shown = block.plainText();
    label->setFont(areaFont(block));
    label->setText(html(block));
    label->setVisible(!shown.isEmpty());
}

void frmMessage::setTexts(const QString& escapedTitle, const QString& instructionMarkup,
                          const QString& contentMarkup, const QString& footerMarkup) {
    m_request.title = mm::titleText(escapedTitle);
    m_request.instructionMarkup = instructionMarkup;
    m_request.contentMarkup = contentMarkup;
    m_request.footerMarkup = footerMarkup;
    setWindowTitle(m_request.title);
    showArea(m_instruction, instructionMarkup, m_request.instruction);
    showArea(m_content, contentMarkup, m_request.content);
    showArea(m_footer, footerMarkup, m_request.footer);
    m_footerArea->setVisible(!m_request.footer.isEmpty());
}

void frmMessage::setIcons(int mainIcon, int footerIcon) {
    m_request.mainIcon = mainIcon;
    m_request.footerIcon = footerIcon;
    const QPixmap main = iconPixmap(style(), mainIcon, kMainIconSize);
    m_mainIcon->setPixmap(main);
    m_mainIcon->setVisible(!main.isNull());
    const QPixmap footer = iconPixmap(style(), footerIcon, kFooterIconSize);
    m_footerIcon->setPixmap(footer);
    m_footerIcon->setVisible(!footer.isNull());
}

void frmMessage::setButtons(const QList<int>& ids) {
    m_request.buttons = ids;
    for (QPushButton* b : std::as_const(m_buttons))
        delete b;
    m_buttons.clear();
    for (int id : ids) {
        auto* button = new QPushButton(buttonCaption(id), this);
        button->setObjectName(buttonName(id));
        connect(button, &QPushButton::clicked, this, [this, id] {
            TSK_ButtonClicked(id);
            done(id);
        });
        m_buttonRow->addWidget(button);
        m_buttons << button;
    }
    if (!m_buttons.isEmpty()) {
        m_buttons.first()->setDefault(true);
        m_buttons.first()->setFocus();
    }
    applyWindowTexts(this, session().texts);
}

void frmMessage::TSK_ButtonClicked(int id) {
    m_answered = true;
    reported("frmMessage.TSK_ButtonClicked()", this, [&] {
        if (id == kIdYes)
            runYesAction();
    });
}

void frmMessage::runYesAction() {
    // The main window carries out what "yes" means for each key.
    auto* actions = dynamic_cast<MessageKeyActions*>(mainWindow());
    if (!actions)
        return;
    const QString& key = last().messageKey;
    if (key == u"id_cmdSalvaMess") {
        actions->saveForQuestion();
    } else if (key == u"Modifica immagine") {
        const QString file =
            mm::imageFileToEdit(actions->selectedImageSource(), session().pathElaboration);
        if (!file.isEmpty())
            dialogs().open(this, file);
    }
}

void frmMessage::TSK_HyperlinkClicked(const QString& url) {
    reported("frmMessage.TSK_HyperlinkClicked()", this, [&] { dialogs().open(this, url); });
}

void frmMessage::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier) {
        // An information box may be dismissed; a question must be answered.
        if (m_request.buttons == QList<int>{kIdOk})
            done(kIdOk);
        event->accept();
        return;
    }
    QDialog::keyPressEvent(event);
}

void frmMessage::closeEvent(QCloseEvent* event) {
    if (m_request.buttons == QList<int>{kIdOk}) {
        done(kIdOk);
        event->accept();
        return;
    }
    event->ignore();
}

QString frmMessage::MessageKey() {
    return last().messageKey;
}

void frmMessage::setMessageKey(const QString& key) {
    last().messageKey = key;
}

namespace bMessage {

int ShowMessage(const QString& title, const QString& instruction, const QString& content,
                const QString& footer, int mainIcon, int footerIcon, QWidget* owner) {
    int id = 0;
    QWidget* parent = owner ? owner : mainWindow();
    reported("bMessage.ShowMessage()", parent, [&] {
        frmMessage box(parent);
        const bool hasFooter = !footer.isEmpty();
        box.setTexts(mm::escapeTitle(title), mm::instructionMarkup(instruction),
                     mm::contentMarkup(content), hasFooter ? mm::footerMarkup(footer) : QString());
        box.setIcons(mainIcon, hasFooter ? footerIcon : int(mm::kIconNone));
        box.setButtons({kIdOk});
        id = runBox(box, QString());
    });
    return id;
}

int ShowMessageYesNo(const QString& key, const QString& title, const QString& instruction,
                     const QString& content, const QString& footer, int mainIcon, int footerIcon) {
    int id = 0;
    QWidget* parent = mainWindow();
    reported("bMessage.ShowMessageYesNo()", parent, [&] {
        frmMessage::setMessageKey(key);
        frmMessage box(parent);
        box.setTexts(mm::escapeTitle(title), mm::instructionMarkup(instruction),
                     mm::contentMarkup(content), mm::footerMarkup(footer));
        box.setIcons(mainIcon, footerIcon);
        box.setButtons({kIdYes, kIdNo});
        id = runBox(box, key);
    });
    return id;
}

int ShowMessageChoice(const QString& key, const QString& title, const QString& instruction,
                      const QString& content, const QList<int>& buttons, int mainIcon) {
    int id = 0;
    QWidget* parent = mainWindow();
    reported("bMessage.ShowMessageChoice()", parent, [&] {
        frmMessage::setMessageKey(key);
        frmMessage box(parent);
        box.setTexts(mm::escapeTitle(title), mm::instructionMarkup(instruction),
                     mm::contentMarkup(content), QString());
        box.setIcons(mainIcon, int(mm::kIconNone));
        box.setButtons(buttons);
        id = runBox(box, key);
    });
    return id;
}

MessageRequest lastRequest() {
    return last().request;
}

} // namespace bMessage

} // namespace quillora::gui
