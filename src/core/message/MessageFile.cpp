#include "core/message/MessageFile.h"

#include "core/app/Folders.h"
#include "core/app/TextFile.h"
#include "core/app/bError.h"
#include "core/message/clsBase64.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>
#include <QSet>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/mman.h>

namespace quillora::MessageFile {

namespace {

constexpr QStringView kCrLf = u"\r\n";
constexpr QStringView kIniFile = u"[<INI-FILE:";
constexpr QStringView kEndFile = u"[<END-FILE>]";
constexpr QStringView kEndObjectLine = u"[<END-OBJECT>]\r\n";

// Input read per step when embedding a file: whole Base64 lines, about half a megabyte.
constexpr qint64 kChunkBytes = clsBase64::kLineBytes * 8192;

// Buffers UTF-16LE output in large blocks. Once the output outgrows one block, a second thread
// hands the full blocks to the device while the caller fills the next one, and asks the system to
// start writing them to the disk, so that the final sync only waits for the last few.
class Utf16Writer {
public:
    explicit Utf16Writer(QFileDevice& out) : m_out(out), m_fd(out.handle()) {}
    ~Utf16Writer() { finish(); }
    Utf16Writer(const Utf16Writer&) = delete;
    Utf16Writer& operator=(const Utf16Writer&) = delete;

    void bom() { put(u"\xFEFF"); }
    void put(QStringView text) {
        while (!text.isEmpty()) {
            if (m_fill.size == m_fill.capacity)
                hand();
            const qsizetype n = std::min(m_fill.capacity - m_fill.size, text.size());
            std::copy_n(text.utf16(), n, m_fill.data.get() + m_fill.size);
            m_fill.size += n;
            text = text.sliced(n);
        }
    }
    void line(QStringView text) {
        put(text);
        put(kCrLf);
    }
    // Room for units more characters at the end of the output; commit(units) keeps them.
    char16_t* reserve(qsizetype units) {
        if (m_fill.capacity - m_fill.size < units)
            hand();
        if (m_fill.capacity < units)
            m_fill = Block(units);
        return m_fill.data.get() + m_fill.size;
    }
    void commit(qsizetype units) { m_fill.size += units; }
    // Writes what is left and waits until it is with the device; the output is complete when
    // ok() says so afterwards.
    void finish() {
        if (m_thread.joinable()) {
            {
                std::lock_guard lock(m_mutex);
                if (m_fill.size > 0)
                    m_full.push_back(std::move(m_fill));
                m_ending = true;
            }
            m_changed.notify_all();
            m_thread.join();
        } else if (m_fill.size > 0) {
            send(m_fill);
        }
        m_fill.size = 0;
    }
    bool ok() const { return m_ok.load(std::memory_order_relaxed); }

private:
    struct Block {
        Block() = default;
        explicit Block(qsizetype units)
            : data(std::make_unique_for_overwrite<char16_t[]>(size_t(units))), capacity(units) {}
        std::unique_ptr<char16_t[]> data;
        qsizetype size = 0;
        qsizetype capacity = 0;
    };
    static constexpr qsizetype kBlockUnits = 2 << 20;
    static constexpr int kBlocks = 3;
    static constexpr qint64 kWriteBackBytes = 8 << 20;

    // Passes the filled block on and takes an empty one.
    void hand() {
        if (m_fill.size == 0) {
            if (m_fill.capacity == 0)
                m_fill = Block(kBlockUnits);
            return;
        }
        if (!m_thread.joinable())
            m_thread = std::thread([this] { drain(); });
        std::unique_lock lock(m_mutex);
        m_full.push_back(std::move(m_fill));
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return !m_free.empty() || m_blocks < kBlocks; });
        if (m_free.empty()) {
            ++m_blocks;
            m_fill = Block(kBlockUnits);
        } else {
            m_fill = std::move(m_free.back());
            m_free.pop_back();
        }
        m_fill.size = 0;
    }
    // The writing thread.
    void drain() {
        std::unique_lock lock(m_mutex);
        for (;;) {
            m_changed.wait(lock, [this] { return !m_full.empty() || m_ending; });
            if (m_full.empty())
                return;
            Block b = std::move(m_full.front());
            m_full.pop_front();
            lock.unlock();
            send(b);
            lock.lock();
            m_free.push_back(std::move(b));
            m_changed.notify_all();
        }
    }
    void send(const Block& b) {
        const qint64 bytes = qint64(b.size) * 2;
        if (!ok() || m_out.write(reinterpret_cast<const char*>(b.data.get()), bytes) != bytes) {
            m_ok = false;
            return;
        }
        m_written += bytes;
        if (m_fd >= 0 && m_written - m_started >= kWriteBackBytes && m_out.flush()) {
            ::sync_file_range(m_fd, m_started, m_written - m_started, SYNC_FILE_RANGE_WRITE);
            m_started = m_written;
        }
    }

    QFileDevice& m_out;
    const int m_fd;
    Block m_fill{kBlockUnits};
    std::atomic<bool> m_ok = true;
    std::thread m_thread;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Block> m_full;
    std::vector<Block> m_free;
    int m_blocks = 1;
    bool m_ending = false;
    // Only the writing thread uses these once it runs.
    qint64 m_written = 0;
    qint64 m_started = 0;
};

// Embeds one file as Base64 lines; the caller writes the lines around it.
QString writeObject(Utf16Writer& out, const QString& path, qint64& done, qint64 total,
                    const Progress& progress) {
    QFile in(path);
    if (!in.open(QIODevice::ReadOnly))
        return QStringLiteral("Cannot read the file %1: %2").arg(path, in.errorString());
    QByteArray chunk(kChunkBytes, Qt::Uninitialized);
    bool first = true;
    for (;;) {
        const qint64 n = in.read(chunk.data(), kChunkBytes);
        if (n < 0)
            return QStringLiteral("Cannot read the file %1: %2").arg(path, in.errorString());
        if (n == 0)
            break;
        // Chunks are whole lines, so joining them with a line break gives the same text as
        // encoding the file in one piece.
        if (!first)
            out.put(kCrLf);
        first = false;
        const qsizetype units = clsBase64::encodedLength(n);
        clsBase64::encode(reinterpret_cast<const uchar*>(chunk.constData()), n, out.reserve(units));
        out.commit(units);
        if (!out.ok())
            break; // the device failed; the caller reports it
        done += n;
        if (progress)
            progress(done, total);
        if (n < kChunkBytes)
            break;
    }
    return QString();
}

// The object line's path: the full path with "\" separators, as every reader expects.
QString storedPathOf(const QString& path) {
    QString p = path;
    p.replace(u'/', u'\\');
    return p;
}

QString folderOf(const QString& path) {
    const qsizetype cut = std::max(path.lastIndexOf(u'/'), path.lastIndexOf(u'\\'));
    return path.left(cut + 1);
}

SaveResult write(const MessageDocument& doc, const QString& path, const SaveOptions& options,
                 bool describePlace) {
    SaveResult result;
    result.path = path;
    const QString base = options.baseFolder.isEmpty() ? folderOf(path) : options.baseFolder;
    const QStringList objects = objectList(doc, base, options.style);

    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        result.description = file.errorString();
        if (describePlace)
            result.description += QStringLiteral("\r\nPath: ") + folderOf(path) +
                                  QStringLiteral("\r\nFile: ") + fileNamePart(path);
        return result;
    }
    Utf16Writer out(file);
    out.bom();
    out.line(QStringLiteral("[<INI-SUBJ>]") + doc.subject + QStringLiteral("[<END-SUBJ>]"));
    out.line(QStringLiteral("[<INI-PRIO>]") + doc.priorityCode() + QStringLiteral("[<END-PRIO>]"));
    out.line(u"[<INI-ALLG>]");
    for (const QString& a : doc.attachments)
        out.line(a);
    out.line(u"[<END-ALLG>]");
    out.line(u"[<INI-MESS>]");
    out.put(doc.body);
    // The closing tag always starts a line of its own; the reader takes this one break off
    // again, so the body comes back exactly as it was written.
    out.put(kCrLf);
    out.line(u"[<END-MESS>]");
    out.line(QString::fromLatin1(kObjectSection));

    qint64 total = 0;
    for (const QString& o : objects)
        total += std::max<qint64>(0, QFileInfo(o).size());
    qint64 done = 0;
    for (const QString& o : objects) {
        out.line(kIniFile.toString() + storedPathOf(o) + QStringLiteral(">]"));
        const QString error = writeObject(out, o, done, total, options.progress);
        if (!error.isEmpty()) {
            out.finish();
            file.cancelWriting();
            result.description = error;
            return result;
        }
        out.put(kCrLf);
        out.line(kEndFile);
    }
    out.line(u"[<END-OBJECT>]");
    out.finish();
    if (!out.ok() || !file.commit()) {
        result.description = file.errorString();
        if (result.description.isEmpty())
            result.description = QStringLiteral("The file could not be written completely");
        file.cancelWriting();
    }
    return result;
}

// The whole file as UTF-16 text. A UTF-16LE file (what we write) is viewed in place through a
// memory mapping; other encodings are decoded into memory.
class MappedText {
public:
    QString open(const QString& path) {
        m_file.setFileName(path);
        const QFileInfo info(path);
        if (!info.exists() || info.isDir())
            return QStringLiteral("The file %1 does not exist").arg(path);
        if (!m_file.open(QIODevice::ReadOnly))
            return QStringLiteral("The file %1 cannot be opened: %2")
                .arg(path, m_file.errorString());
        const qint64 size = m_file.size();
        if (size == 0)
            return QString();
        const uchar* data = m_file.map(0, size);
        QByteArray owned;
        if (data) {
            // Read ahead in large sequential chunks rather than a few pages per fault; what
            // was read can be dropped early.
            ::madvise(const_cast<uchar*>(data), size_t(size), MADV_SEQUENTIAL);
            ::madvise(const_cast<uchar*>(data), size_t(size), MADV_WILLNEED);
        } else {
            owned = m_file.readAll();
            data = reinterpret_cast<const uchar*>(owned.constData());
        }
        if (size >= 2 && data[0] == 0xFF && data[1] == 0xFE && owned.isEmpty()) {
            if (size % 2 != 0)
                return QStringLiteral("The file %1 is cut short (UTF-16 text with an odd number "
                                      "of bytes)")
                    .arg(path);
            m_view = QStringView(reinterpret_cast<const char16_t*>(data + 2), (size - 2) / 2);
            return QString();
        }
        TextFile::Decoded d =
            TextFile::decode(QByteArrayView(reinterpret_cast<const char*>(data), qsizetype(size)));
        if (!d.ok())
            return QStringLiteral("The file %1 cannot be read: %2")
                .arg(path, TextFile::describe(d.error));
        m_owned = std::move(d.text);
        m_view = m_owned;
        m_file.unmap(const_cast<uchar*>(data));
        return QString();
    }
    QStringView text() const { return m_view; }

private:
    QFile m_file;
    QString m_owned;
    QStringView m_view;
};

bool hasAllTags(QStringView text) {
    for (const char* tag : kTags) {
        if (!text.contains(QLatin1String(tag)))
            return false;
    }
    return true;
}

// Walks the text line by line; a line ends at CR LF, LF or CR.
class LineReader {
public:
    explicit LineReader(QStringView text) : m_text(text) {}
    bool atEnd() const { return m_pos >= m_text.size(); }
    qsizetype position() const { return m_pos; }
    // The next line without its break; lineStart() tells where it began.
    QStringView next() {
        m_lineStart = m_pos;
        const qsizetype n = m_text.size();
        qsizetype i = m_pos;
        while (i < n && m_text[i] != u'\r' && m_text[i] != u'\n')
            ++i;
        const QStringView line = m_text.sliced(m_pos, i - m_pos);
        if (i < n && m_text[i] == u'\r' && i + 1 < n && m_text[i + 1] == u'\n')
            i += 2;
        else if (i < n)
            i += 1;
        m_pos = i;
        return line;
    }
    qsizetype lineStart() const { return m_lineStart; }

private:
    QStringView m_text;
    qsizetype m_pos = 0;
    qsizetype m_lineStart = 0;
};

QString stripTags(QStringView line, QLatin1String open, QLatin1String close) {
    QString s = line.toString();
    s.remove(open);
    s.remove(close);
    return s.trimmed();
}

// The Base64 text of one object piece: what follows ">]" up to the closing marker, with the
// line breaks around it. bracket: where the first "[" of data is, or -1. Pieces as we write them
// are taken as a view; anything else goes through the historic rule (markers removed, the last four
// characters cut off).
QStringView objectData(QStringView data, QString& scratch, qsizetype bracket) {
    if (bracket >= 0) {
        const QStringView tail = data.sliced(bracket);
        const QString endFile = kEndFile.toString() + kCrLf.toString();
        if (tail == endFile || tail == endFile + kEndObjectLine.toString())
            return bracket >= 2 ? data.first(bracket - 2) : QStringView();
    }
    scratch = data.toString();
    scratch.remove(kEndFile.toString());
    scratch.remove(kEndObjectLine.toString());
    scratch.chop(4);
    return scratch;
}

qint64 decodedSize(QStringView b64) {
    qint64 chars = 0;
    const qsizetype n = b64.size();
    for (qsizetype i = 0; i < n; ++i) {
        const char16_t c = b64[i].unicode();
        if (c == u'\r' && i + 1 < n && b64[i + 1] == u'\n') {
            ++i;
            continue;
        }
        if (c != u'=')
            ++chars;
    }
    const qint64 rem = chars % 4;
    return chars / 4 * 3 + (rem == 2 ? 1 : rem == 3 ? 2 : 0);
}

// Writes embedded files back while the reader goes on through the text: the objects are
// independent, so with more than one core they are decoded side by side. Progress is reported on
// the caller's thread only, in bytes of object text restored so far.
//
// A tentative restorer serves a reader that guessed where objects end. It only makes new files,
// and a guessed object's text must hold no "[" (which would end it earlier). When either check
// fails, finish() removes every file it made and returns false, and the reader starts again with
// every end looked up.
class Restorer {
public:
    Restorer(qint64 total, const Progress& progress, bool tentative)
        : m_total(total), m_progress(progress), m_tentative(tentative) {}
    ~Restorer() { finish(); }

    // Queues one object; index is its place in the content's object list, keep holds the text
    // when data does not point into the file, guessed tells that its end was guessed. A second
    // object for the same file waits until all others are written, so the last one still wins,
    // as when they are written in turn.
    void add(qsizetype index, QStringView data, QString target, qint64 span,
             std::shared_ptr<QString> keep, bool guessed) {
        Job job{index,
                data,
                std::move(target),
                span,
                std::move(keep),
                guessed,
                {.newFileOnly = m_tentative, .noBracket = m_tentative && guessed}};
        std::unique_lock lock(m_mutex);
        if (m_targets.contains(job.target)) {
            m_deferred.push_back(std::move(job));
            return;
        }
        m_targets.insert(job.target);
        m_jobs.push_back(std::move(job));
        if (m_workers.empty() && m_total >= kParallelChars) {
            const unsigned cores = std::clamp(std::thread::hardware_concurrency(), 1u, 4u);
            for (unsigned i = 1; i < cores; ++i)
                m_workers.emplace_back([this] { work(false); });
        }
        m_wake.notify_one();
    }
    // Marks that no more objects come; without helpers the caller restores them all itself.
    // False when a tentative restore failed its checks and took back what it wrote.
    bool finish() {
        {
            std::lock_guard lock(m_mutex);
            if (m_finished)
                return !m_wrongGuess;
            m_finished = true;
        }
        m_wake.notify_all();
        work(true);
        for (std::thread& t : m_workers)
            t.join();
        m_workers.clear();
        // The files that waited overwrite others, so their text is checked before any is written.
        if (!m_wrongGuess && m_tentative) {
            m_wrongGuess = std::any_of(m_deferred.begin(), m_deferred.end(), [](const Job& job) {
                return job.guessed && job.data.contains(u'[');
            });
        }
        if (m_wrongGuess) {
            for (const QString& made : m_made)
                QFile::remove(made);
            m_deferred.clear();
            return false;
        }
        std::sort(m_deferred.begin(), m_deferred.end(),
                  [](const Job& a, const Job& b) { return a.index < b.index; });
        for (Job& job : m_deferred) {
            job.checks = {};
            restore(job);
        }
        m_deferred.clear();
        report();
        return true;
    }
    // Fills in what was restored and returns the failures, in object order.
    std::vector<QString> takeWarnings(QList<StoredObject>& objects) {
        std::vector<QString> warnings(size_t(objects.size()));
        for (Done& d : m_done) {
            StoredObject& o = objects[d.index];
            if (d.result.ok()) {
                o.restoredPath = d.target;
                o.size = d.result.bytes;
            } else {
                warnings[size_t(d.index)] =
                    QStringLiteral("The embedded file %1 could not be restored: %2")
                        .arg(o.name, d.result.error);
            }
        }
        return warnings;
    }

private:
    struct Job {
        qsizetype index;
        QStringView data;
        QString target;
        qint64 span;
        std::shared_ptr<QString> keep;
        bool guessed;
        clsBase64::WriteChecks checks;
    };
    struct Done {
        qsizetype index;
        QString target;
        clsBase64::WriteResult result;
    };
    static constexpr qint64 kParallelChars = 4 << 20;

    // The caller's thread runs this once the text is read through; helpers run it from the start
    // and wait for work while the reader has not finished.
    void work(bool caller) {
        std::unique_lock lock(m_mutex);
        for (;;) {
            if (m_jobs.empty()) {
                if (m_finished) {
                    if (!caller)
                        return;
                    // Wait for the helpers' last files, reporting each as it lands.
                    if (m_running == 0)
                        return;
                    m_landed.wait(lock);
                    lock.unlock();
                    report();
                    lock.lock();
                    continue;
                }
                m_wake.wait(lock);
                continue;
            }
            Job job = std::move(m_jobs.front());
            m_jobs.pop_front();
            if (m_wrongGuess)
                continue; // all of it is taken back
            ++m_running;
            run(job, lock);
            --m_running;
            m_landed.notify_all();
            if (caller) {
                lock.unlock();
                report();
                lock.lock();
            }
        }
    }
    // Writes one file with the lock released, and counts it in with the lock held again.
    void run(Job& job, std::unique_lock<std::mutex>& lock) {
        lock.unlock();
        clsBase64::WriteResult result = clsBase64::ConvertiInFile(job.data, job.target, job.checks);
        lock.lock();
        if (result.declined == clsBase64::Declined::FileExists) {
            m_deferred.push_back(std::move(job)); // written once the guesses hold
            return;
        }
        if (m_tentative)
            m_made.push_back(job.target); // nothing was there before, whatever the outcome
        if (result.declined == clsBase64::Declined::Bracket) {
            m_wrongGuess = true;
            return;
        }
        m_restored += job.span;
        m_done.push_back({job.index, std::move(job.target), std::move(result)});
    }
    void restore(Job& job) {
        {
            std::unique_lock lock(m_mutex);
            run(job, lock);
        }
        report();
    }
    void report() {
        if (!m_progress)
            return;
        qint64 restored;
        {
            std::lock_guard lock(m_mutex);
            restored = m_restored;
        }
        if (restored != m_reported) {
            m_reported = restored;
            m_progress(restored, m_total);
        }
    }

    const qint64 m_total;
    const Progress& m_progress;
    const bool m_tentative;
    bool m_wrongGuess = false;
    std::vector<QString> m_made; // files a tentative restore made
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::condition_variable m_landed;
    std::deque<Job> m_jobs;
    std::vector<Job> m_deferred;
    QSet<QString> m_targets;
    std::vector<Done> m_done;
    std::vector<std::thread> m_workers;
    qint64 m_restored = 0;
    qint64 m_reported = -1;
    int m_running = 0;
    bool m_finished = false;
};

// Where the data of the object whose name ends at `from` most likely ends: the "[" of its end
// marker. The writer puts a line break after the name, then lines of 76 characters and CR LF,
// so whole lines are probed a few at a time rather than read, and only what follows the last
// one is searched. The guess holds when no "[" comes before it; the restore reads every
// character of the data and checks that.
qsizetype guessDataEnd(QStringView s, qsizetype from) {
    constexpr qsizetype kLine = clsBase64::kLineChars + 2;
    const qsizetype first = from + 2;
    const auto wholeLine = [&](qsizetype k) {
        const qsizetype at = first + k * kLine;
        return at + kLine <= s.size() && s[at] != u'[' && s[at + kLine - 2] == u'\r' &&
               s[at + kLine - 1] == u'\n';
    };
    if (!wholeLine(0))
        return s.indexOf(u'[', from);
    // wholeLine(lo) holds and wholeLine(hi) does not.
    qsizetype lo = 0, hi = 1;
    while (wholeLine(hi)) {
        lo = hi;
        hi *= 2;
    }
    while (hi - lo > 1) {
        const qsizetype mid = lo + (hi - lo) / 2;
        (wholeLine(mid) ? lo : hi) = mid;
    }
    return s.indexOf(u'[', first + (lo + 1) * kLine);
}

// Lists the objects of the object section into content and queues each restorable one.
// guessEnds: the ends of objects as the writer lays them out are guessed (the restorer checks
// them) rather than searched for. Returns the warning of each object, or an empty text.
std::vector<QString> scanObjects(QStringView section, Content& c, const QString& restoreFolder,
                                 Restorer& restorer, bool guessEnds) {
    std::vector<QString> warnings;
    qsizetype at = section.indexOf(kIniFile);
    const QString endFileLine = kEndFile.toString() + kCrLf.toString();
    while (at >= 0) {
        const qsizetype start = at + kIniFile.size();
        // Base64 holds no "[": the first one after the data is its end marker, and the next
        // object starts right after that. The files are large, so this saves a pass over them;
        // anything unusual is split at every "[<INI-FILE:" as always.
        qsizetype next = -1;
        qsizetype close = section.indexOf(u">]", start);
        // Only the end of an object that is restored is guessed: restoring checks the guess.
        const bool guess =
            guessEnds && close >= 0 &&
            References::safeFileName(section.sliced(start, close - start)).has_value();
        qsizetype bracket = close < 0 ? -1
                            : guess   ? guessDataEnd(section, close + 2)
                                      : section.indexOf(u'[', close + 2);
        bool quick = false;
        if (bracket >= 0 && !section.sliced(start, close - start).contains(kIniFile) &&
            section.sliced(bracket).startsWith(endFileLine)) {
            const QStringView rest = section.sliced(bracket + endFileLine.size());
            if (rest.startsWith(kIniFile)) {
                next = bracket + endFileLine.size();
                quick = true;
            } else if (rest == kEndObjectLine) {
                quick = true;
            }
        }
        if (!quick) {
            next = section.indexOf(kIniFile, start);
            if (next >= 0 && close >= next)
                close = -1;
            if (close >= 0)
                bracket = section.first(next < 0 ? section.size() : next).indexOf(u'[', close + 2);
        }
        const QStringView piece = section.sliced(start, (next < 0 ? section.size() : next) - start);
        at = next;
        StoredObject o;
        if (close >= 0) {
            close -= start;
            bracket = bracket < 0 ? -1 : bracket - start - close - 2;
        }
        o.storedPath = (close < 0 ? piece : piece.first(close)).toString();
        // A piece in an unusual layout is decoded from a copy, which the queue must keep.
        auto scratch = std::make_shared<QString>();
        const QStringView data =
            close < 0 ? QStringView() : objectData(piece.sliced(close + 2), *scratch, bracket);
        // Restoring learns the size from the decoder; listing counts characters.
        if (restoreFolder.isEmpty())
            o.size = decodedSize(data);
        const auto name = References::safeFileName(o.storedPath);
        warnings.emplace_back();
        if (!name) {
            warnings.back() =
                QStringLiteral("An embedded file with the unusable name \"%1\" was skipped")
                    .arg(o.storedPath.left(200));
        } else {
            o.name = *name;
            if (!restoreFolder.isEmpty())
                restorer.add(c.objects.size(), data, withTrailingSlash(restoreFolder) + o.name,
                             piece.size(), std::move(scratch), guess && quick);
        }
        c.objects << o;
    }
    return warnings;
}

} // namespace

QString withMessageExtension(const QString& path) {
    const qsizetype nameStart = std::max(path.lastIndexOf(u'/'), path.lastIndexOf(u'\\')) + 1;
    const qsizetype dot = path.lastIndexOf(u'.');
    if (dot < nameStart)
        return path + QStringLiteral(".mssx");
    if (path.mid(dot).toLower() == QLatin1String(".mssx"))
        return path;
    return path.left(dot) + QStringLiteral(".mssx");
}

QStringList objectList(const MessageDocument& doc, const QString& baseFolder,
                       References::PathStyle style) {
    QStringList objects = doc.attachments;
    objects += References::objectList(doc.body, baseFolder, style);
    return objects;
}

SaveResult SalvaMessaggio(MessageDocument& doc, const QString& path, const SaveOptions& options) {
    const QString target = withMessageExtension(path);
    SaveResult r = write(doc, target, options, true);
    if (r.ok())
        doc.markSaved(target);
    return r;
}

SaveResult SalvaMessaggioPerCheckSpam(const MessageDocument& doc, const QString& path,
                                      const SaveOptions& options) {
    return write(doc, path, options, false);
}

ReadResult read(const QString& path, const QString& restoreFolder, const Progress& progress) {
    ReadResult r;
    MappedText mapped;
    r.error = mapped.open(path);
    if (!r.ok())
        return r;
    const QStringView text = mapped.text();
    if (!hasAllTags(text)) {
        r.error = QStringLiteral("The file %1 is not a message file").arg(path);
        return r;
    }
    Content& c = r.content;
    c.version = text.contains(QLatin1String(kObjectSection)) ? 4 : 3;

    LineReader lines(text);
    c.subject =
        stripTags(lines.next(), QLatin1String("[<INI-SUBJ>]"), QLatin1String("[<END-SUBJ>]"));
    c.priority =
        stripTags(lines.next(), QLatin1String("[<INI-PRIO>]"), QLatin1String("[<END-PRIO>]"));
    bool ended = false;
    while (!lines.atEnd()) {
        const QStringView line = lines.next().trimmed();
        if (line == QLatin1String("[<END-ALLG>]")) {
            ended = true;
            break;
        }
        if (!line.isEmpty() && line != QLatin1String("[<INI-ALLG>]"))
            c.storedAttachments << line.toString();
    }
    if (!ended) {
        r.error =
            QStringLiteral("The file %1 is damaged: its attachment list never ends").arg(path);
        return r;
    }
    while (!lines.atEnd() && lines.next().trimmed() != QLatin1String("[<INI-MESS>]")) {
    }
    const qsizetype bodyStart = lines.position();
    qsizetype bodyEnd = -1;
    while (!lines.atEnd()) {
        if (lines.next().trimmed() == QLatin1String("[<END-MESS>]")) {
            bodyEnd = lines.lineStart();
            break;
        }
    }
    if (bodyEnd < 0) {
        r.error = QStringLiteral("The file %1 is damaged: its message body never ends").arg(path);
        return r;
    }
    QStringView body = text.sliced(bodyStart, bodyEnd - bodyStart);
    if (body.endsWith(kCrLf))
        body.chop(2);
    else if (body.endsWith(u'\n') || body.endsWith(u'\r'))
        body.chop(1);
    c.body = body.toString();

    if (c.version != 4)
        return r;
    if (!restoreFolder.isEmpty() && !QDir().mkpath(restoreFolder)) {
        r.error = QStringLiteral("The folder %1 cannot be created").arg(restoreFolder);
        return r;
    }
    // Objects come only from after the body, so a body quoting the markers restores nothing.
    const QStringView section = text.sliced(lines.position());
    const qint64 total = section.size();
    // Restoring guesses where each object ends, which spares a pass over megabytes of text
    // before the first file can start. A wrong guess (only a file laid out by hand can lead
    // to one) is taken back, and the objects are read again the long way; progress only rises.
    qint64 shown = -1;
    const Progress rising = [&](qint64 done, qint64 all) {
        if (progress && done > shown) {
            shown = done;
            progress(done, all);
        }
    };
    std::vector<QString> found, restored;
    for (bool guess : {!restoreFolder.isEmpty(), false}) {
        c.objects.clear();
        Restorer restorer(total, rising, guess);
        found = scanObjects(section, c, restoreFolder, restorer, guess);
        if (restorer.finish()) {
            restored = restorer.takeWarnings(c.objects);
            break;
        }
    }
    for (size_t i = 0; i < found.size(); ++i) {
        if (!found[i].isEmpty())
            c.warnings << found[i];
        if (!restored[i].isEmpty())
            c.warnings << restored[i];
    }
    return r;
}

bool ControllaFormatoFileMessaggio(const QString& path) {
    MappedText mapped;
    return mapped.open(path).isEmpty() && hasAllTags(mapped.text());
}

bool ControllaSeVersione4(const QString& path) {
    MappedText mapped;
    return mapped.open(path).isEmpty() && mapped.text().contains(QLatin1String(kObjectSection));
}

OpenResult ApriMessaggio(MessageDocument& doc, const QString& path, const QString& pathFileImp,
                         const Progress& progress) {
    OpenResult result;
    bError::wrtErrFree(QStringLiteral("ApriMessaggio()"));
    if (!ControllaFormatoFileMessaggio(path)) {
        result.notAMessage = true;
        result.error = QStringLiteral("The file %1 is not a message file").arg(path);
        return result;
    }
    bError::wrtErrFree(QStringLiteral("ApriMessaggio() - File: ") + path);

    // The new working folder is filled before the old one goes, so a file that turns out to be
    // damaged leaves the message on screen with all its pictures.
    const QString restore = NewWorkFolderBeside(pathFileImp, doc.restoreFolder);
    if (restore.isEmpty()) {
        result.error =
            QStringLiteral("The working folder cannot be created in %1").arg(pathFileImp);
        return result;
    }

    ReadResult r = read(path, restore, progress);
    if (!r.ok()) {
        result.error = r.error;
        CancellaPercorsoTemporaneo(restore);
        return result;
    }
    if (!doc.restoreFolder.isEmpty())
        CancellaPercorsoTemporaneo(doc.restoreFolder);
    Content& c = r.content;
    doc.restoreFolder = restore;
    doc.openedFileName = fileNamePart(path);
    doc.formatVersion = c.version;
    doc.subject = c.subject;
    doc.setPriorityCode(c.priority);
    doc.attachments.clear();
    for (const QString& stored : c.storedAttachments) {
        if (c.version != 4) {
            doc.attachments << stored;
        } else if (const auto name = References::safeFileName(stored)) {
            doc.attachments << restore + *name;
        } else {
            c.warnings << QStringLiteral(
                              "The attachment \"%1\" has an unusable name and was left out")
                              .arg(stored.left(200));
        }
    }
    doc.body = c.body;
    doc.titleName = u'[' + doc.openedFileName + u']';
    doc.currentPath = path;
    doc.loadedFromFile = true;
    result.warnings = c.warnings;
    return result;
}

} // namespace quillora::MessageFile
