#include "gui/editor/PreviewPane.h"

#include "core/app/Texts.h"
#include "core/editor/CommandTable.h"
#include "core/spamcheck/SendSettings.h"
#include "gui/app/ColorStyle.h"
#include "gui/app/Session.h"
#include "gui/app/ThemeIcons.h"
#include "gui/editor/VisualSurface.h"

#include <QAction>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QMenu>
#include <QPointer>
#include <QTableWidget>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

namespace quillora::gui {

namespace {

using namespace Qt::StringLiterals;

// ":::nom:::" → "nom".
QString fieldName(const char* token) {
    const QString t = QString::fromLatin1(token);
    return t.mid(3, t.size() - 6);
}

} // namespace

PreviewPane::PreviewPane(QWidget* parent) : QWidget(parent) {
    setObjectName(u"PreviewPane"_s);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
}

void PreviewPane::showEvent(QShowEvent* event) {
    build();
    QWidget::showEvent(event);
}

void PreviewPane::build() {
    if (m_width)
        return;
    auto* layout = static_cast<QVBoxLayout*>(this->layout());
    auto* bar = new QToolBar(this);
    bar->setObjectName(u"TbPreview"_s);
    bar->setIconSize(QSize(18, 18));
    bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_width = new QComboBox(bar);
    m_width->setObjectName(u"cmbPreviewWidth"_s);
    m_width->addItem(themeIcon(u"computer"_s), u"Desktop"_s);
    m_width->addItem(themeIcon(u"smartphone"_s), u"Phone 375 px"_s);
    m_width->addItem(themeIcon(u"tablet"_s), u"Tablet 768 px"_s);
    bar->addWidget(m_width);
    bar->addSeparator();

    m_dark = new QToolButton(bar);
    m_dark->setObjectName(u"chkDarkMode"_s);
    m_dark->setCheckable(true);
    m_dark->setText(u"Dark mode"_s);
    m_dark->setIcon(themeIcon(u"weather-clear-night"_s));
    m_dark->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_dark->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_D));
    bar->addWidget(m_dark);
    m_forceDark =
        new QAction(themeIcon(u"color-management"_s), u"Always darken the colours"_s, this);
    m_forceDark->setObjectName(u"chkForceDark"_s);
    m_forceDark->setCheckable(true);
    bar->addAction(m_forceDark);
    bar->addSeparator();

    m_sample = new QToolButton(bar);
    m_sample->setObjectName(u"chkSampleRecipient"_s);
    m_sample->setCheckable(true);
    m_sample->setText(u"Sample recipient"_s);
    m_sample->setIcon(themeIcon(u"user-identity"_s));
    m_sample->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    bar->addWidget(m_sample);
    m_editSample =
        new QAction(themeIcon(u"document-edit"_s), u"Edit the sample recipient..."_s, this);
    m_editSample->setObjectName(u"cmdEditSample"_s);
    bar->addAction(m_editSample);
    layout->addWidget(bar);

    // The surface sits on a grey stage that shows where a narrow screen ends.
    m_stage = new QWidget(this);
    m_stage->setObjectName(u"PreviewStage"_s);
    m_stage->setAutoFillBackground(true);
    QPalette p = m_stage->palette();
    p.setColor(QPalette::Window, QColor(0x80, 0x80, 0x80));
    m_stage->setPalette(p);
    m_stageLayout = new QHBoxLayout(m_stage);
    m_stageLayout->setContentsMargins(0, 0, 0, 0);
    m_stageLayout->addStretch(0);
    m_stageLayout->addStretch(0); // the surface goes between the two
    layout->addWidget(m_stage, 1);

    connect(m_width, &QComboBox::currentIndexChanged, this,
            [this](int index) { setWidthPreset(Width(index)); });
    connect(m_dark, &QToolButton::toggled, this, [this] { render(); });
    connect(m_forceDark, &QAction::toggled, this, [this](bool on) {
        if (on && !m_dark->isChecked())
            m_dark->setChecked(true); // renders
        else
            render();
    });
    connect(m_sample, &QToolButton::toggled, this, [this] { render(); });
    connect(m_editSample, &QAction::triggered, this, &PreviewPane::editSampleRecipient);
    showTexts();
    // Made after the window took its colours, the bar takes them now.
    if (const ColorScheme* scheme = programColorScheme())
        colourControls(this, *scheme);
}

VisualSurface* PreviewPane::surface() {
    build();
    if (!m_web) {
        m_web = new VisualSurface(false, m_stage);
        m_web->setObjectName(u"WEB"_s);
        m_stageLayout->insertWidget(1, m_web, 1);
        connect(m_web, &VisualSurface::documentComplete, this, &PreviewPane::afterLoad);
        applyWidth();
    }
    return m_web;
}

void PreviewPane::showBody(const QString& html, const QString& folder) {
    m_html = html;
    m_folder = folder;
    render();
}

void PreviewPane::render() {
    if (m_html.isNull())
        return;
    build();
    QString html = m_html;
    if (m_sample->isChecked())
        html = fillSample(html, SendSettings::read(settingsFile()).sample);
    surface()->setDocumentHTML(html, m_folder);
}

void PreviewPane::afterLoad() {
    if (!m_dark->isChecked()) {
        emit rendered();
        return;
    }
    QPointer<PreviewPane> self(this);
    m_web->showDark(m_forceDark->isChecked(), [self](bool) {
        if (self)
            emit self->rendered();
    });
}

void PreviewPane::setWidthPreset(Width width) {
    build();
    if (m_width->currentIndex() != int(width)) {
        m_width->setCurrentIndex(int(width)); // comes back here
        return;
    }
    applyWidth();
    // Loaded afresh at the new width, the page lays out as it would on that screen from the
    // start (and the darkening, which depends on the layout, is applied again).
    render();
}

void PreviewPane::applyWidth() {
    if (!m_web)
        return;
    // A fixed width is the viewport a phone or tablet gives the message, so its media queries
    // apply as they would there.
    const Width width = widthPreset();
    const int px = width == Width::Phone ? kPhonePx : width == Width::Tablet ? kTabletPx : 0;
    if (px > 0) {
        m_web->setFixedWidth(px);
    } else {
        m_web->setMinimumWidth(0);
        m_web->setMaximumWidth(QWIDGETSIZE_MAX);
    }
}

PreviewPane::Width PreviewPane::widthPreset() const {
    return m_width ? Width(m_width->currentIndex()) : Width::Desktop;
}

void PreviewPane::setDark(bool on) {
    build();
    m_dark->setChecked(on);
}

bool PreviewPane::dark() const {
    return m_dark && m_dark->isChecked();
}

void PreviewPane::setForceDark(bool on) {
    build();
    m_forceDark->setChecked(on);
}

void PreviewPane::setSampleRecipient(bool on) {
    build();
    m_sample->setChecked(on);
}

bool PreviewPane::sampleRecipient() const {
    return m_sample && m_sample->isChecked();
}

QString PreviewPane::settingsFile() const {
    return session().folders.pathFileImp + QString::fromLatin1(SendSettings::kFileName);
}

void PreviewPane::editSampleRecipient() {
    build();
    const Texts& texts = session().texts;
    auto* dialog = new QDialog(window());
    dialog->setObjectName(u"frmSampleRecipient"_s);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(texts.get(u"prvSampleTitle"_s));
    auto* layout = new QVBoxLayout(dialog);
    const auto fields = editor::mergeFields();
    auto* table = new QTableWidget(int(fields.size()), 2, dialog);
    table->setObjectName(u"tblSample"_s);
    table->setHorizontalHeaderLabels({texts.get(u"prvField"_s), texts.get(u"prvValue"_s)});
    table->horizontalHeader()->setStretchLastSection(true);
    table->verticalHeader()->hide();
    const SendSettings settings = SendSettings::read(settingsFile());
    for (int row = 0; row < int(fields.size()); ++row) {
        auto* token = new QTableWidgetItem(QString::fromLatin1(fields[size_t(row)].token));
        token->setFlags(Qt::ItemIsEnabled);
        table->setItem(row, 0, token);
        table->setItem(
            row, 1,
            new QTableWidgetItem(settings.sample.value(fieldName(fields[size_t(row)].token))));
    }
    table->resizeColumnToContents(0);
    layout->addWidget(table);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, dialog);
    layout->addWidget(buttons);
    dialog->resize(420, 560);
    connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    QPointer<PreviewPane> self(this);
    connect(buttons, &QDialogButtonBox::accepted, dialog, [self, dialog, table, fields] {
        if (self) {
            SendSettings s = SendSettings::read(self->settingsFile());
            s.sample.clear();
            for (int row = 0; row < table->rowCount(); ++row) {
                const QString value = table->item(row, 1)->text().trimmed();
                if (!value.isEmpty())
                    s.sample.insert(fieldName(fields[size_t(row)].token), value);
            }
            s.write(self->settingsFile());
            if (!self->m_sample->isChecked())
                self->m_sample->setChecked(true); // renders
            else
                self->render();
        }
        dialog->accept();
    });
    dialog->show();
}

void PreviewPane::applyTexts(const Texts& texts) {
    m_texts = texts;
    showTexts();
}

void PreviewPane::showTexts() {
    if (!m_width || !m_texts)
        return; // shown when the bar is made
    const Texts& texts = *m_texts;
    const auto set = [&](auto* w, const char* key) {
        const QString t = texts.get(QString::fromLatin1(key));
        if (!t.isEmpty())
            w->setText(t);
    };
    const char* const widths[] = {"prvDesktop", "prvPhone", "prvTablet"};
    for (int i = 0; i < 3; ++i) {
        const QString t = texts.get(QString::fromLatin1(widths[i]));
        if (!t.isEmpty())
            m_width->setItemText(i, t);
    }
    set(m_dark, "prvDark");
    set(m_forceDark, "prvForceDark");
    set(m_sample, "prvSample");
    set(m_editSample, "prvEditSample");
}

} // namespace quillora::gui
