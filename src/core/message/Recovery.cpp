#include "core/message/Recovery.h"

#include "core/app/TextFile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

namespace quillora::Recovery {

namespace {

constexpr QStringView kPathKey = u"Path: ";
constexpr QStringView kTitleKey = u"Title: ";
constexpr qint64 kMaxDescriptionBytes = 64 * 1024;

QString messagePath(const QString& folder, const QString& id) {
    return folder + id + QStringLiteral(".mssx");
}
QString descriptionPath(const QString& folder, const QString& id) {
    return folder + id + QStringLiteral(".dll");
}
QString lockPath(const QString& folder, const QString& id) {
    return folder + id + QStringLiteral(".lock");
}

// Only a lock whose owner has ended is taken over: a lock file is never called stale for its
// age, since an editor may stay open for days.
std::unique_ptr<QLockFile> makeLock(const QString& path) {
    auto lock = std::make_unique<QLockFile>(path);
    lock->setStaleLockTime(0);
    return lock;
}

} // namespace

QString folder(const QString& pathFileImp) {
    return pathFileImp + QStringLiteral("Recovery/");
}

// The writer's thread and what it is asked to write. The mutex is held for the whole of a
// write made by the caller, so the thread never writes the same slot at the same time.
struct Writer::Background {
    struct Job {
        MessageDocument doc;
        QString baseFolder;
        Done done;
    };
    std::mutex mutex;
    std::condition_variable wake;
    std::condition_variable idle;
    std::optional<Job> pending;
    bool busy = false;
    bool quit = false;
    std::thread thread;
};

Writer::Writer(const QString& pathFileImp)
    : m_folder(folder(pathFileImp)), m_background(std::make_unique<Background>()) {
    if (!QDir().mkpath(m_folder))
        return;
    const QString base = QStringLiteral("%1-%2")
                             .arg(QCoreApplication::applicationPid())
                             .arg(QDateTime::currentMSecsSinceEpoch());
    for (int n = 0; n < 100; ++n) {
        const QString id = n == 0 ? base : base + u'_' + QString::number(n);
        auto lock = makeLock(lockPath(m_folder, id));
        // A slot whose files exist belongs to someone else, even when its lock is gone.
        if (QFileInfo::exists(messagePath(m_folder, id)) || !lock->tryLock(0))
            continue;
        m_id = id;
        m_lock = std::move(lock);
        return;
    }
}

Writer::~Writer() {
    {
        const std::lock_guard lock(m_background->mutex);
        m_background->pending.reset(); // a copy not started yet stays unwritten
        m_background->quit = true;
    }
    m_background->wake.notify_one();
    if (m_background->thread.joinable())
        m_background->thread.join();
}

bool Writer::isValid() const {
    return m_lock != nullptr;
}

QString Writer::messageFile() const {
    return isValid() ? messagePath(m_folder, m_id) : QString();
}

MessageFile::SaveResult Writer::write(const MessageDocument& doc, const QString& baseFolder) {
    std::unique_lock lock(m_background->mutex);
    m_background->pending.reset();
    m_background->idle.wait(lock, [this] { return !m_background->busy; });
    return writeCopy(doc, baseFolder);
}

void Writer::post(MessageDocument doc, QString baseFolder, Done done) {
    {
        const std::lock_guard lock(m_background->mutex);
        m_background->pending =
            Background::Job{std::move(doc), std::move(baseFolder), std::move(done)};
        if (!m_background->thread.joinable())
            m_background->thread = std::thread([this] { writeInBackground(); });
    }
    m_background->wake.notify_one();
}

void Writer::waitIdle() {
    std::unique_lock lock(m_background->mutex);
    m_background->idle.wait(lock, [this] { return !m_background->busy && !m_background->pending; });
}

void Writer::writeInBackground() {
    Background& b = *m_background;
    std::unique_lock lock(b.mutex);
    for (;;) {
        b.wake.wait(lock, [&b] { return b.quit || b.pending; });
        if (b.quit)
            return;
        Background::Job job = std::move(*b.pending);
        b.pending.reset();
        b.busy = true;
        lock.unlock();
        const MessageFile::SaveResult r = writeCopy(job.doc, job.baseFolder);
        if (job.done)
            job.done(r);
        lock.lock();
        b.busy = false;
        b.idle.notify_all();
    }
}

MessageFile::SaveResult Writer::writeCopy(const MessageDocument& doc, const QString& baseFolder) {
    if (!isValid()) {
        MessageFile::SaveResult r;
        r.description = QStringLiteral("The recovery folder %1 cannot be used")
                            .arg(QDir::toNativeSeparators(m_folder));
        return r;
    }
    MessageFile::SaveOptions options;
    options.baseFolder = baseFolder;
    MessageFile::SaveResult r =
        MessageFile::SalvaMessaggioPerCheckSpam(doc, messagePath(m_folder, m_id), options);
    if (!r.ok())
        return r;
    QString title = doc.titleName;
    if (title.endsWith(QLatin1String("*]")))
        title = title.chopped(2) + u']'; // the unsaved mark
    const QStringList lines = {kPathKey.toString() + doc.currentPath, kTitleKey.toString() + title};
    if (!TextFile::writeLines(descriptionPath(m_folder, m_id), lines))
        r.description = QStringLiteral("The description of the recovery copy cannot be written");
    return r;
}

void Writer::remove() {
    std::unique_lock lock(m_background->mutex);
    m_background->pending.reset();
    m_background->idle.wait(lock, [this] { return !m_background->busy; });
    if (!isValid())
        return;
    QFile::remove(messagePath(m_folder, m_id));
    QFile::remove(descriptionPath(m_folder, m_id));
}

bool Writer::hasCopy() const {
    return isValid() && QFileInfo::exists(messagePath(m_folder, m_id));
}

Claim::Claim(Copy copy, std::unique_ptr<QLockFile> lock)
    : m_copy(std::move(copy)), m_lock(std::move(lock)) {}
Claim::~Claim() = default;
Claim::Claim(Claim&&) noexcept = default;
Claim& Claim::operator=(Claim&&) noexcept = default;

void Claim::discard() {
    if (!m_lock)
        return;
    const QString dir = QFileInfo(m_copy.messageFile).absolutePath() + u'/';
    QFile::remove(m_copy.messageFile);
    QFile::remove(descriptionPath(dir, m_copy.id));
    m_lock.reset(); // unlocking removes the lock file
}

Copy describe(const QString& dir, const QString& id) {
    Copy c;
    c.id = id;
    c.messageFile = messagePath(dir, id);
    c.written = QFileInfo(c.messageFile).lastModified();
    QStringList lines;
    TextFile::readLines(descriptionPath(dir, id), lines, kMaxDescriptionBytes);
    for (const QString& line : std::as_const(lines)) {
        if (line.startsWith(kPathKey))
            c.originalPath = line.mid(kPathKey.size());
        else if (line.startsWith(kTitleKey))
            c.titleName = line.mid(kTitleKey.size());
    }
    if (c.titleName.isEmpty())
        c.titleName = c.originalPath.isEmpty() ? QString::fromLatin1(MessageDocument::kNewTitleName)
                                               : u'[' + fileNamePart(c.originalPath) + u']';
    return c;
}

std::vector<Claim> claimOrphans(const QString& pathFileImp) {
    const QString dir = folder(pathFileImp);
    std::vector<Claim> claims;
    const QFileInfoList files =
        QDir(dir).entryInfoList({QStringLiteral("*.mssx")}, QDir::Files, QDir::Time);
    for (const QFileInfo& f : files) {
        const QString id = f.completeBaseName();
        auto lock = makeLock(lockPath(dir, id));
        // Taken only when nobody holds it: its writer is gone (Qt removes a lock whose
        // process has ended) or it never had one.
        if (!lock->tryLock(0))
            continue;
        claims.emplace_back(describe(dir, id), std::move(lock));
    }
    return claims;
}

} // namespace quillora::Recovery
