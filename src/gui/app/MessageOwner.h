#pragma once

#include <QObject>
#include <QString>

class QLocalServer;

// One window per message: the editor that has a message open answers on a local socket named
// after the user and the message's file, so another editor that is asked to open the same file
// brings that window forward instead of editing the message twice.
namespace quillora::gui {

class MessageOwner : public QObject {
    Q_OBJECT
public:
    explicit MessageOwner(QObject* parent = nullptr);
    ~MessageOwner() override;

    // The socket name for a message file: the user and a digest of the file's canonical path
    // (a message reached through another spelling or a link is the same message).
    static QString serverName(const QString& file);

    // Asks the editor that owns the file, if any, to come forward. True when one answered.
    static bool bringForward(const QString& file, int timeoutMs = 2000);

    // This editor now holds `file` (empty: none). False when another editor holds it.
    bool own(const QString& file);
    QString ownedFile() const { return m_file; }

signals:
    void forwardRequested(); // another editor asked for this message

private:
    void release();
    QLocalServer* m_server = nullptr;
    QString m_file;
};

} // namespace quillora::gui
