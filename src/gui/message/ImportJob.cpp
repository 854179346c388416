#include "gui/message/ImportJob.h"

#include <QProgressDialog>

namespace quillora::gui {

ImportJob::ImportJob(QString source, QString workFolder, DocumentConverter::Settings settings,
                     QWidget* window, QString waitText, const QString& stopText)
    : QObject(window), m_source(std::move(source)), m_workFolder(std::move(workFolder)),
      m_settings(std::move(settings)), m_waitText(std::move(waitText)) {
    m_wait = new QProgressDialog(m_waitText, stopText, 0, 0, window);
    m_wait->setObjectName(QStringLiteral("frmAttesa"));
    m_wait->setWindowTitle(QStringLiteral("Quillora"));
    m_wait->setWindowModality(Qt::WindowModal);
    m_wait->setMinimumDuration(0);
    m_wait->setAutoClose(false);
    m_wait->setAutoReset(false);
    connect(m_wait, &QProgressDialog::canceled, this, &ImportJob::cancel);
    connect(this, &ImportJob::stepChanged, m_wait, [this](const QString& step) {
        if (m_wait)
            m_wait->setLabelText(m_waitText + QStringLiteral("\n") + step);
    });
}

ImportJob::~ImportJob() {
    m_cancel->store(true);
    if (m_thread) {
        m_thread->wait();
        delete m_thread;
    }
    delete m_wait;
}

void ImportJob::start() {
    qRegisterMetaType<DocumentConverter::Imported>();
    m_settings.cancel = m_cancel.get();
    // Both run on the worker thread; the destructor waits for it, so `this` outlives them,
    // and the signals reach the window queued, on its own thread.
    m_settings.step = [this](const QString& step) { emit stepChanged(step); };
    m_wait->show();
    m_thread = QThread::create([this] {
        emit finished(DocumentConverter::importFile(m_source, m_workFolder, m_settings));
    });
    m_thread->start();
}

} // namespace quillora::gui
