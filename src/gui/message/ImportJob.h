#pragma once

#include "core/message/DocumentConverter.h"

#include <QObject>
#include <QPointer>
#include <QThread>
#include <QWidget>
#include <atomic>
#include <memory>

#include <QProgressDialog>

namespace quillora::gui {

// One import that runs an outside converter: the work runs on a thread of its own so the
// window keeps answering, a wait window shows what runs and can stop it. `finished` comes
// on the GUI thread, exactly once, also when the import was stopped.
class ImportJob : public QObject {
    Q_OBJECT
public:
    ImportJob(QString source, QString workFolder, DocumentConverter::Settings settings,
              QWidget* window, QString waitText, const QString& stopText);
    ~ImportJob() override; // stops the converter and waits for the thread

    void start();
    void cancel() { m_cancel->store(true); }
    QProgressDialog* waitWindow() const { return m_wait; }

signals:
    void finished(const quillora::DocumentConverter::Imported& imported);
    void stepChanged(const QString& step);

private:
    QString m_source;
    QString m_workFolder;
    DocumentConverter::Settings m_settings;
    std::shared_ptr<std::atomic_bool> m_cancel = std::make_shared<std::atomic_bool>(false);
    QThread* m_thread = nullptr;
    QPointer<QProgressDialog> m_wait;
    QString m_waitText;
};

} // namespace quillora::gui

Q_DECLARE_METATYPE(quillora::DocumentConverter::Imported)
