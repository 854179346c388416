#include "gui/tools/frmImpDaImg.h"

#include "core/app/Folders.h"
#include "core/tools/ImageSlicer.h"
#include "gui/app/Dialogs.h"
#include "gui/app/LanguageApplier.h"
#include "gui/app/Session.h"
#include "gui/app/WindowHelpers.h"
#include "gui/app/frmMessage.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QThread>
#include <QToolButton>
#include <QVBoxLayout>

namespace quillora::gui {

namespace {

constexpr float kSpinStep = 50;

QString numberText(float value) {
    return QString::number(value);
}

// A field that never stays at or below its minimum: checked on every change, as it is typed.
void keepAbove(QLineEdit* field, float minimum) {
    QObject::connect(field, &QLineEdit::textChanged, field, [field, minimum](const QString& text) {
        const QString floor = numberText(minimum);
        if (tools::fieldValue(text) <= minimum && text != floor)
            field->setText(floor);
    });
}

} // namespace

frmImpDaImg::frmImpDaImg(Host host, QWidget* parent) : QDialog(parent), m_host(std::move(host)) {
    setObjectName(QStringLiteral("frmImpDaImg"));
    setWindowTitle(QStringLiteral("Import from an image"));
    setModal(true);

    auto* grid = new QGridLayout;
    const auto label = [this](const char* name, const char* text) {
        auto* l = new QLabel(QString::fromUtf8(text), this);
        l->setObjectName(QString::fromLatin1(name));
        return l;
    };
    const auto lineEdit = [this](const char* name, const QString& text) {
        auto* e = new QLineEdit(text, this);
        e->setObjectName(QString::fromLatin1(name));
        return e;
    };
    // The up and down halves of a spinner beside a field.
    const auto spinner = [this](const char* name, std::function<void(int)> step) {
        auto* box = new QWidget(this);
        box->setObjectName(QString::fromLatin1(name));
        auto* column = new QVBoxLayout(box);
        column->setContentsMargins(0, 0, 0, 0);
        column->setSpacing(0);
        for (const int direction : {1, -1}) {
            auto* b = new QToolButton(box);
            b->setObjectName(QString::fromLatin1(name) +
                             (direction > 0 ? QStringLiteral("Up") : QStringLiteral("Down")));
            b->setArrowType(direction > 0 ? Qt::UpArrow : Qt::DownArrow);
            b->setAutoRepeat(true);
            b->setFixedSize(18, 12);
            connect(b, &QToolButton::clicked, this, [step, direction] { step(direction); });
            column->addWidget(b);
        }
        return box;
    };

    txtFile = lineEdit("txtFile", QString());
    auto* cmdFile = new QToolButton(this);
    cmdFile->setObjectName(QStringLiteral("cmdFile"));
    cmdFile->setText(QStringLiteral("..."));
    connect(cmdFile, &QToolButton::clicked, this, &frmImpDaImg::cmdFile_Click);
    txtMaxWidth = lineEdit("txtMaxWidth", QStringLiteral("600"));
    txtAltSez = lineEdit("txtAltSez", QStringLiteral("100"));
    keepAbove(txtMaxWidth, tools::kMinWidth);
    keepAbove(txtAltSez, tools::kMinSliceHeight);
    txtMaxWidth->installEventFilter(this);
    txtAltSez->installEventFilter(this);

    grid->addWidget(label("lblFile", "Image file:"), 0, 0);
    grid->addWidget(txtFile, 0, 1);
    grid->addWidget(cmdFile, 0, 2);
    grid->addWidget(label("lblMaxWidth", "Maximum width (px):"), 1, 0);
    grid->addWidget(txtMaxWidth, 1, 1);
    grid->addWidget(spinner("UpDw1", [this](int d) { UpDw1_Click(d); }), 1, 2);
    grid->addWidget(label("lblAltezzaSez", "Slice height (px):"), 2, 0);
    grid->addWidget(txtAltSez, 2, 1);
    grid->addWidget(spinner("UpDw2", [this](int d) { UpDw2_Click(d); }), 2, 2);
    grid->setColumnStretch(1, 1);
    grid->setColumnMinimumWidth(1, 320);

    m_progress = new QProgressBar(this);
    m_progress->setObjectName(QStringLiteral("prgSlices"));
    m_progress->setVisible(false);

    cmdImportImg = new QPushButton(QStringLiteral("&Import"), this);
    cmdImportImg->setObjectName(QStringLiteral("cmdImportImg"));
    cmdImportImg->setDefault(true);
    connect(cmdImportImg, &QPushButton::clicked, this, &frmImpDaImg::cmdImportImg_Click);
    cmdCancel = new QPushButton(tr("Cancel"), this);
    cmdCancel->setObjectName(QStringLiteral("cmdCancel"));
    connect(cmdCancel, &QPushButton::clicked, this, &frmImpDaImg::reject);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(cmdImportImg);
    buttons->addWidget(cmdCancel);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addWidget(m_progress);
    layout->addLayout(buttons);

    applyWindowTexts(this, session().texts);
}

frmImpDaImg::~frmImpDaImg() {
    // The slices belong to a folder that may go with the window: the worker ends first.
    if (m_worker) {
        m_cancel->store(true);
        m_worker->wait();
    }
}

void frmImpDaImg::cmdFile_Click() {
    const QString file =
        dialogs().openFileName(this, QStringLiteral("Apri file immagine"),
                               QStringLiteral("File immagine |*.png;*.gif;*.jpg;*.jpeg"));
    if (!file.isEmpty())
        txtFile->setText(file);
}

void frmImpDaImg::UpDw1_Click(int step) {
    txtMaxWidth->setText(numberText(tools::fieldValue(txtMaxWidth->text()) + step * kSpinStep));
}

void frmImpDaImg::UpDw2_Click(int step) {
    txtAltSez->setText(numberText(tools::fieldValue(txtAltSez->text()) + step * kSpinStep));
}

void frmImpDaImg::warn(const QString& what, const QString& remedy) {
    bMessage::ShowMessage(QStringLiteral("Corvanta"),
                          QStringLiteral("Transform Image in HTML format"), what, remedy,
                          quillora::bMessage::kIconWarning, quillora::bMessage::kIconNone, this);
}

void frmImpDaImg::report(const QString& description) {
    ShowErrorReport(QStringLiteral("frmImpDaImg.cmdImportImg_Click()"), 0, description, this);
}

void frmImpDaImg::cmdImportImg_Click() {
    if (m_running)
        return;
    const QString file = txtFile->text();
    const float width = tools::fieldValue(txtMaxWidth->text());
    const float sliceHeight = tools::fieldValue(txtAltSez->text());
    switch (tools::checkSliceInput(file, width, sliceHeight)) {
    case tools::SliceCheck::MissingFile:
        warn(QStringLiteral("File Image"), QStringLiteral("Change file please."));
        return;
    case tools::SliceCheck::NoWidth:
        warn(QStringLiteral("Max Width"), QStringLiteral("Value error, change value Max Width."));
        return;
    case tools::SliceCheck::NoSliceHeight:
        warn(QStringLiteral("Height Section"),
             QStringLiteral("Value error, change value Height Section."));
        return;
    case tools::SliceCheck::Ok:
        break;
    }
    const QString folder = m_host.newWorkFolder ? m_host.newWorkFolder() : QString();
    if (folder.isEmpty()) {
        report(QStringLiteral("The working folder cannot be created"));
        return;
    }

    m_cancel = std::make_shared<std::atomic<bool>>(false);
    auto result = std::make_shared<tools::SliceResult>();
    const auto cancel = m_cancel;
    // The progress comes from the worker: it is shown from the event loop, and it is the
    // worker's only way to learn about Cancel.
    const auto progress = [this, cancel](int done, int total) {
        QMetaObject::invokeMethod(
            this,
            [this, done, total] {
                m_progress->setMaximum(total);
                m_progress->setValue(done);
            },
            Qt::QueuedConnection);
        return !cancel->load();
    };
    m_worker = QThread::create([result, file, width, sliceHeight, folder, progress] {
        *result = tools::sliceImage(file, width, sliceHeight, folder, progress);
    });
    connect(m_worker, &QThread::finished, this, [this, result, folder] {
        m_worker->deleteLater();
        m_worker = nullptr;
        conversionDone(*result, folder);
    });
    setRunning(true);
    m_worker->start();
}

void frmImpDaImg::conversionDone(const tools::SliceResult& result, const QString& workFolder) {
    setRunning(false);
    if (!result.ok()) {
        // Nothing of the current message has changed: its folder and page are as they were.
        CancellaPercorsoTemporaneo(workFolder);
        if (!result.cancelled)
            report(result.error);
        emit finished(false);
        if (m_closeWhenDone)
            QDialog::reject();
        return;
    }
    m_progress->setVisible(true);
    m_progress->setMaximum(0); // busy while the page loads
    cmdImportImg->setEnabled(false);
    QPointer<frmImpDaImg> self(this);
    m_host.showPage(result.pageFile, workFolder, [self](bool shown) {
        if (!self)
            return;
        emit self->finished(shown);
        if (shown)
            self->accept();
        else
            self->setRunning(false);
    });
}

void frmImpDaImg::setRunning(bool running) {
    m_running = running;
    m_progress->setVisible(running);
    if (running) {
        m_progress->setRange(0, 0);
        m_progress->setValue(0);
    }
    cmdImportImg->setEnabled(!running);
    for (QWidget* w : {static_cast<QWidget*>(txtFile), static_cast<QWidget*>(txtMaxWidth),
                       static_cast<QWidget*>(txtAltSez)})
        w->setEnabled(!running);
}

void frmImpDaImg::reject() {
    // While slices are written, Cancel stops them; the window closes once the worker is done.
    if (m_running) {
        m_cancel->store(true);
        m_closeWhenDone = true;
        return;
    }
    QDialog::reject();
}

bool frmImpDaImg::eventFilter(QObject* watched, QEvent* event) {
    // Up and Down in a number field work as its spinner (the field would take them itself).
    if (event->type() == QEvent::KeyPress && (watched == txtMaxWidth || watched == txtAltSez)) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Up || key == Qt::Key_Down) {
            const int step = key == Qt::Key_Up ? 1 : -1;
            if (watched == txtMaxWidth)
                UpDw1_Click(step);
            else
                UpDw2_Click(step);
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

} // namespace quillora::gui
