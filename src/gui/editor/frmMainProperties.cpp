// The main window's element property pane, body properties, background sound and unsubscribe
// link.
#include "core/app/AccountStore.h"
#include "core/app/bError.h"
#include "core/editor/ElementProperties.h"
#include "core/editor/UnsubscribeLink.h"
#include "gui/app/ColorStyle.h"
#include "gui/app/Dialogs.h"
#include "gui/app/LanguageApplier.h"
#include "gui/app/Reported.h"
#include "gui/app/Session.h"
#include "gui/app/ThemeIcons.h"
#include "gui/app/frmMessage.h"
#include "gui/editor/VisualSurface.h"
#include "gui/editor/frmAttributi.h"
#include "gui/editor/frmMain.h"
#include "gui/message/frmPropBody.h"
#include "gui/message/frmSelAudio.h"

#include <QAction>
#include <QColor>
#include <QDockWidget>
#include <QJsonArray>
#include <QJsonObject>
#include <QMenu>
#include <QTabWidget>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>
#include <stdexcept>
#include <string>

namespace quillora::gui {

namespace {

QString writeKind(editor::AttributeWrite::Kind kind) {
    using K = editor::AttributeWrite::Kind;
    switch (kind) {
    case K::Remove:
        return QStringLiteral("remove");
    case K::TextProperty:
        return QStringLiteral("text");
    case K::NumberProperty:
        return QStringLiteral("number");
    case K::BooleanProperty:
        return QStringLiteral("boolean");
    case K::Attribute:
        break;
    }
    return QStringLiteral("attribute");
}

const editor::PropertyRow* rowOf(const QString& tag, const QString& attribute) {
    for (const editor::PropertyRow& r : editor::propertyRows(tag)) {
        if (attribute.compare(QLatin1String(r.attribute), Qt::CaseInsensitive) == 0)
            return &r;
    }
    return nullptr;
}

// A body colour as "#RRGGBB": named colours ("navy") are read as the page reads them.
QString hexColour(const QString& written) {
    const QColor c(written.trimmed());
    return c.isValid() ? c.name() : written;
}

} // namespace

void frmMain::buildPropertyPane() {
    dckProperty = new QDockWidget(QStringLiteral("Element properties"), this);
    dckProperty->setObjectName(QStringLiteral("dckProperty"));
    prepareSchemeSheets(dckProperty);
    m_attributi = new frmAttributi(dckProperty);
    dckProperty->setWidget(m_attributi);
    m_visualPanes << dckProperty;
    // The pane follows the caret mirror: every state the page reports refills it.
    connect(DHTML, &VisualSurface::stateChanged, this, &frmMain::GetAllAttribute);
    connect(DHTML, &VisualSurface::documentComplete, this, &frmMain::GetAllAttribute);
    connect(m_attributi, &frmAttributi::rowEdited, this,
            [this](const QString& attribute, const QString& value) {
                AggiornaItem(attribute, value);
                Modificato();
            });
    connect(m_attributi, &frmAttributi::buttonPressed, this, &frmMain::PROP_InplaceButtonDown);
    connect(m_attributi, &frmAttributi::classListWanted, this, &frmMain::GetAllClass);

    m_propBody = new frmPropBody(this);
    connect(m_propBody, &frmPropBody::saved, this, [this](const BodyProperties::Values& v) {
        reported(QStringLiteral("frmPropBody.cdmSalva_Click()"), this,
                 [&] { writeBodyProperties(v); });
    });
    m_selAudio = new frmSelAudio(this);
    connect(m_selAudio, &frmSelAudio::chosen, this, [this](const BackgroundSound::Choice& c) {
        reported(QStringLiteral("frmMain.Dks_CommandClick()"), this, [&] { placeSound(c); });
    });

    popSubRem = new QMenu(QStringLiteral("&Unsubscribe link"), this);
    popSubRem->setObjectName(QStringLiteral("popSubRem"));
    popSubRem->setIcon(themeIcon(QStringLiteral("mail-mark-junk")));
    connect(popSubRem, &QMenu::aboutToShow, this, &frmMain::CheckDestRemove);
    if (QMenu* insert = m_bars.menu(QStringLiteral("mnuInsert")))
        insert->addMenu(popSubRem);
    if (QToolBar* bar = m_bars.toolbar(QStringLiteral("TbInserisci"))) {
        auto* button = new QToolButton(bar);
        button->setObjectName(QStringLiteral("popSubRemButton"));
        button->setMenu(popSubRem);
        button->setIcon(popSubRem->icon());
        button->setText(popSubRem->title().remove(u'&'));
        button->setToolTip(button->text());
        button->setPopupMode(QToolButton::InstantPopup);
        bar->addWidget(button);
    }
}

void frmMain::dockPropertyPane() {
    if (dockWidgetArea(dckProperty) == Qt::NoDockWidgetArea)
        addDockWidget(Qt::RightDockWidgetArea, dckProperty);
    restoreDockWidget(dckProperty);
    GetAllAttribute();
}

void frmMain::GetAllAttribute() {
    reported(QStringLiteral("frmMain.GetAllAttribute()"), this,
             [&] { m_attributi->showElement(DHTML->state()); });
}

void frmMain::AggiornaItem(const QString& attribute, const QString& value) {
    reported(QStringLiteral("frmMain.AggiornaItem()"), this, [&] {
        const QString tag = DHTML->state().propertyTag;
        const editor::PropertyRow* row = rowOf(tag, attribute);
        if (!row)
            return; // the selection has moved to an element without this row
        QString written = value;
        if (row->kind == editor::RowKind::Colour) {
            const std::optional<QString> html = editor::colourRowToHtml(value);
            if (!html) {
                bMessage::ShowMessage(m_texts.get(QStringLiteral("Attenzione")),
                                      m_texts.get(QStringLiteral("ColoreNonValido")), value,
                                      QString(), quillora::bMessage::kIconWarning,
                                      quillora::bMessage::kIconNone, this);
                return;
            }
            written = *html;
        }
        const editor::AttributeWrite w = editor::attributeWrite(tag, attribute, written);
        QPointer<frmMain> self(this);
        DHTML->setElementAttribute(writeKind(w.kind), w.name, w.value,
                                   [self](const QString& error) {
                                       if (self && !error.isEmpty())
                                           self->reportError(QStringLiteral("AggiornaItem"), error);
                                   });
    });
}

void frmMain::PROP_InplaceButtonDown(const QString& attribute, const QString& button) {
    reported(QStringLiteral("frmMain.PROP_InplaceButtonDown()"), this, [&] {
        if (button == QLatin1String("...")) {
            const QString file =
                dialogs().openFileName(this, QStringLiteral("File"),
                                       QStringLiteral("Image (*.jpg;*.gif;*.png;*.bmp)|"
                                                      "*.jpg;*.gif;*.png;*.bmp"));
            if (!file.isEmpty())
                m_attributi->editRow(attribute, file);
        } else if (button == QLatin1String("Edit")) {
            // The row's image: a background row names a file the selection does not.
            m_imageToEdit = m_attributi->rowValue(attribute);
            struct Clear {
                QString& s;
                ~Clear() { s.clear(); }
            } clear{m_imageToEdit};
            EditaImmagine();
        } else {
            GetAllClass();
        }
    });
}

void frmMain::GetAllClass() {
    QPointer<frmMain> self(this);
    DHTML->styleSelectors([self](const QStringList& selectors, const QString& error) {
        if (!self)
            return;
        if (!error.isEmpty())
            bError::wrtErrFree(QStringLiteral("GetAllClass() - ERR: ") + error);
        self->m_attributi->setClassList(editor::classNamesFromSelectors(selectors));
    });
}

void frmMain::ProprietaBody() {
    QPointer<frmMain> self(this);
    DHTML->bodyValues([self](const QVariantMap& m) {
        if (!self)
            return;
        reported(QStringLiteral("frmPropBody.PrendiValori()"), self, [&] {
            BodyProperties::BodyAttributes body;
            const auto text = [&m](const char* name) {
                return m.value(QLatin1String(name)).toString();
            };
            body.leftmargin = text("leftmargin");
            body.topmargin = text("topmargin");
            body.marginwidth = text("marginwidth");
            body.marginheight = text("marginheight");
            body.background = text("background");
            for (int c = 0; c < BodyProperties::ColourCount; ++c)
                body.colours[c] =
                    hexColour(text(BodyProperties::colourAttribute(BodyProperties::Colour(c))));
            applyWindowTexts(self->m_propBody, self->m_texts);
            self->m_propBody->PrendiValori(BodyProperties::valuesFromBody(body));
            self->m_propBody->open();
        });
    });
}

void frmMain::writeBodyProperties(const BodyProperties::Values& values) {
    QJsonArray steps;
    for (const BodyProperties::Step& s : BodyProperties::writeSteps(values))
        steps.append(QJsonObject{{QStringLiteral("remove"), s.remove},
                                 {QStringLiteral("name"), s.name},
                                 {QStringLiteral("value"), s.value}});
    DHTML->setBodyAttributes(steps, {});
    // The whole document goes back into the page, and from it to the other pages.
    QPointer<frmMain> self(this);
    DHTML->fetchDocumentHTML([self](const QString& html) {
        // Out of the page's callback: storing a document starts a new load.
        QTimer::singleShot(0, self, [self, html] {
            if (self)
                self->showBody(html, true, QStringLiteral("cdmSalva_Click"));
        });
    });
}

void frmMain::SelezionaAudio() {
    applyWindowTexts(m_selAudio, m_texts);
    m_selAudio->reset();
    m_selAudio->open();
}

void frmMain::placeSound(const BackgroundSound::Choice& c) {
    if (c.file.isEmpty())
        return; // the window was left without a file: the message keeps what it had
    QPointer<frmMain> self(this);
    DHTML->backgroundSound(c.file, BackgroundSound::loopAttribute(c),
                           BackgroundSound::insertionHtml(c), [self](const QString& done) {
                               if (self && !done.isEmpty())
                                   self->Modificato();
                           });
}

void frmMain::CheckDestRemove() {
    reported(QStringLiteral("frmMain.CheckDestRemove()"), this, [&] {
        popSubRem->clear();
        QString error = session().accountsError;
        std::optional<QList<Account>> accounts;
        if (error.isEmpty()) {
            if (!AccountStore::isOpen())
                error = QStringLiteral("The accounts database is not open");
            else
                accounts = AccountStore().list(&error);
        }
        if (!accounts)
            throw std::runtime_error(error.toStdString());
        for (const Account& a : *accounts) {
            if (!a.active)
                continue;
            const QString id = editor::unsubscribeCommand(a.id);
            const QString caption = a.displayName.isEmpty()
                                        ? a.address
                                        : a.displayName + QStringLiteral(" <") + a.address + u'>';
            QAction* entry = popSubRem->addAction(caption);
            entry->setObjectName(id);
            connect(entry, &QAction::triggered, this, [this, id] { Dks_CommandClick(id); });
        }
        if (popSubRem->isEmpty()) {
            QAction* none =
                popSubRem->addAction(m_texts.get(QStringLiteral("SubRemNessunAccount")));
            none->setObjectName(QStringLiteral("popSubRemEmpty"));
            none->setEnabled(false);
        }
    });
}

std::optional<QString> frmMain::GetEmailRemove(const QString& command) {
    std::optional<QString> address;
    reported(QStringLiteral("frmMain.GetEmailRemove()"), this, [&] {
        const std::optional<qint64> id = editor::accountOfCommand(command);
        if (!id)
            throw std::runtime_error("No account identifier in the command " +
                                     command.toStdString());
        if (!session().accountsError.isEmpty())
            throw std::runtime_error(session().accountsError.toStdString());
        if (!AccountStore::isOpen())
            throw std::runtime_error("The accounts database is not open");
        const std::optional<Account> account = AccountStore().find(*id);
        if (!account)
            throw std::runtime_error("There is no account with the identifier " +
                                     std::to_string(*id));
        address = account->address;
    });
    return address;
}

void frmMain::insertUnsubscribeLink(const QString& command) {
    const std::optional<QString> address = GetEmailRemove(command);
    if (address)
        InsertHtmlCode(editor::unsubscribeLink(*address, session().currentLanguage));
}

} // namespace quillora::gui
