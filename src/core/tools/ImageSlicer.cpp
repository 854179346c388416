#include "core/tools/ImageSlicer.h"

#include "core/app/bFunctions.h"

#include <FreeImage.h>
#include <libdeflate.h>
#include <png.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace quillora::tools {

namespace {

// Every full-height slice holds this many rows, whatever the slice height: with the minimum slice
// height the slices tile the picture, with a larger one the page stretches each slice.
constexpr int kSliceRows = 100;

// The library reports through one process-wide callback; each thread collects the messages of
// its own current operation.
thread_local QString* t_messages = nullptr;

void collectMessage(FREE_IMAGE_FORMAT, const char* message) {
    if (t_messages && message)
        *t_messages = QString::fromLocal8Bit(message);
}

void initialiseLibrary() {
    static std::once_flag once;
    std::call_once(once, [] {
        FreeImage_Initialise(FALSE);
        FreeImage_SetOutputMessage(collectMessage);
    });
}

// Keeps the library's last message for as long as it lives, on this thread.
class MessageCapture {
public:
    MessageCapture() : m_previous(t_messages) { t_messages = &m_text; }
    ~MessageCapture() { t_messages = m_previous; }
    MessageCapture(const MessageCapture&) = delete;
    MessageCapture& operator=(const MessageCapture&) = delete;
    // The library's message when it gave one, else ours.
    QString orElse(const QString& ours) const { return m_text.isEmpty() ? ours : m_text; }
    void clear() { m_text.clear(); }

private:
    QString m_text;
    QString* m_previous;
};

struct BitmapDeleter {
    void operator()(FIBITMAP* dib) const { FreeImage_Unload(dib); }
};
using Bitmap = std::unique_ptr<FIBITMAP, BitmapDeleter>;

// A single-precision value as the page shows it: the shortest text that reads back as the same
// value, never with an exponent (600 is "600", 150.5 is "150.5").
QByteArray singleText(float value) {
    char buffer[64];
    const auto r = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed);
    return r.ec == std::errc() ? QByteArray(buffer, r.ptr - buffer) : QByteArray("0");
}

// Whole pixels, half to even; values outside [1, limit] give nothing.
std::optional<int> toPixels(double value, double limit) {
    if (!(value >= 0.5 && value <= limit))
        return std::nullopt;
    const long pixels = std::lrint(value);
    return pixels >= 1 ? std::optional<int>(int(pixels)) : std::nullopt;
}

struct Format {
    FREE_IMAGE_FORMAT fif = FIF_UNKNOWN;
    int flags = 0;
};

// By the text after the last ".", in lower case; other extensions are not loaded.
Format formatByExtension(const QString& path) {
    const QString ext = path.mid(path.lastIndexOf(u'.') + 1).toLower();
    if (ext == QLatin1String("png"))
        return {FIF_PNG, PNG_DEFAULT};
    if (ext == QLatin1String("gif"))
        return {FIF_GIF, GIF_DEFAULT};
    if (ext == QLatin1String("jpg") || ext == QLatin1String("jpeg"))
        return {FIF_JPEG, JPEG_ACCURATE};
    return {};
}

quint16 littleEndian16(const QByteArray& bytes, int at) {
    return quint16(quint8(bytes[at]) | quint8(bytes[at + 1]) << 8);
}

// The library cannot read a GIF's header alone, and allocates its first frame at the declared
// size: read the logical screen and the first frame descriptor here. 0 when there is no GIF
// header (the loader then says what is wrong).
qint64 gifDeclaredPixels(const QString& path) {
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray head = f.read(13);
    if (head.size() < 13 || !head.startsWith("GIF"))
        return 0;
    qint64 largest = qint64(littleEndian16(head, 6)) * littleEndian16(head, 8);
    const quint8 flags = quint8(head[10]);
    if (flags & 0x80)
        f.skip(3 * (qint64(1) << ((flags & 7) + 1)));
    char block = 0;
    while (f.getChar(&block)) {
        if (block == 0x21) { // extension: a label, then sub-blocks up to an empty one
            char size = 0;
            if (!f.getChar(&size))
                break;
            while (f.getChar(&size) && size != 0)
                f.skip(quint8(size));
        } else if (block == 0x2C) { // the first frame's descriptor
            const QByteArray d = f.read(8);
            if (d.size() == 8)
                largest = std::max(largest, qint64(littleEndian16(d, 4)) * littleEndian16(d, 6));
            break;
        } else {
            break;
        }
    }
    return largest;
}

// The declared size, read without decoding any pixel; 0 when the header cannot be read (the full
// load then reports why).
qint64 declaredPixels(const QByteArray& path, const Format& format, const QString& qpath) {
    if (!FreeImage_FIFSupportsNoPixels(format.fif))
        return format.fif == FIF_GIF ? gifDeclaredPixels(qpath) : 0;
    const Bitmap header(
        FreeImage_Load(format.fif, path.constData(), format.flags | FIF_LOAD_NOPIXELS));
    if (!header)
        return 0;
    return qint64(FreeImage_GetWidth(header.get())) * FreeImage_GetHeight(header.get());
}

// A bitmap PNG can store: 16 bits per channel become 8 (the colour ones through the 24- and
// 32-bit conversions, which the standard-type one does not cover), then a depth PNG lacks
// (16-bit 555/565) becomes 24 bits, or 32 with transparency.
Bitmap storableAsPng(Bitmap dib) {
    switch (FreeImage_GetImageType(dib.get())) {
    case FIT_BITMAP:
        break;
    case FIT_RGB16:
    case FIT_RGBF:
        dib.reset(FreeImage_ConvertTo24Bits(dib.get()));
        break;
    case FIT_RGBA16:
    case FIT_RGBAF:
        dib.reset(FreeImage_ConvertTo32Bits(dib.get()));
        break;
    default:
        dib.reset(FreeImage_ConvertToStandardType(dib.get(), TRUE));
        break;
    }
    if (dib && !FreeImage_FIFSupportsExportBPP(FIF_PNG, int(FreeImage_GetBPP(dib.get())))) {
        dib.reset(FreeImage_IsTransparent(dib.get()) ? FreeImage_ConvertTo32Bits(dib.get())
                                                     : FreeImage_ConvertTo24Bits(dib.get()));
    }
    return dib;
}

// --- Writing true-colour slices --------------------------------------------------------------
//
// The image library writes a PNG with the encoder's adaptive choice of row filter and offers no
// other. On slices of a scanned or photographed page the "up" filter alone gives files of the
// same size (within 0.1% on the benchmark's picture) in a little more than half the time, and
// the compression at its best is most of the slicer's work; so true-colour slices, nearly all
// of them, are written here. Their rows are filtered "up" and compressed by libdeflate at its
// level 9, which gives smaller files than zlib's best level in well under half the time; the
// PNG library the image library uses writes the chunks, with the one chunk the image library
// adds, the resolution (the rescale keeps no colour profile).

struct PngError {
    char text[200] = {};
};

void onPngError(png_structp png, png_const_charp message) {
    auto* error = static_cast<PngError*>(png_get_error_ptr(png));
    std::snprintf(error->text, sizeof error->text, "%s", message ? message : "PNG error");
    png_longjmp(png, 1);
}

void onPngWarning(png_structp, png_const_charp) {}

struct PngImage {
    const unsigned char* imageData; // the compressed rows
    size_t imageDataSize;
    png_uint_32 width, height;
    int colourType;
    png_uint_32 dotsPerMetreX, dotsPerMetreY;
};

// Only plain data lives here: the PNG library leaves through longjmp when it fails.
bool encodePng(FILE* file, const PngImage& in, PngError& error) {
    png_structp png =
        png_create_write_struct(PNG_LIBPNG_VER_STRING, &error, onPngError, onPngWarning);
    if (!png)
        return false;
    png_infop info = png_create_info_struct(png);
    if (!info) {
        png_destroy_write_struct(&png, nullptr);
        return false;
    }
    if (setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, &info);
        return false;
    }
    png_init_io(png, file);
    png_set_IHDR(png, info, in.width, in.height, 8, in.colourType, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_BASE, PNG_FILTER_TYPE_BASE);
    if (in.dotsPerMetreX && in.dotsPerMetreY)
        png_set_pHYs(png, info, in.dotsPerMetreX, in.dotsPerMetreY, PNG_RESOLUTION_METER);
    png_write_info(png, info);
    // The image data in one chunk; the library's own end would report that it wrote none.
    png_write_chunk(png, reinterpret_cast<png_const_bytep>("IDAT"), in.imageData, in.imageDataSize);
    png_write_chunk(png, reinterpret_cast<png_const_bytep>("IEND"), nullptr, 0);
    png_destroy_write_struct(&png, &info);
    return true;
}

bool writesDirectly(FIBITMAP* dib) {
    const unsigned bpp = FreeImage_GetBPP(dib);
    return FreeImage_GetImageType(dib) == FIT_BITMAP && (bpp == 24 || bpp == 32);
}

// Rows top .. top + rows of a picture of `Channels` bytes a pixel as a PNG's image data before
// compression: each row after its filter type, "up", then every byte less the one above it
// (nothing above the first row), in the file's order: red, green, blue, alpha.
template <size_t Channels>
void filterUp(FIBITMAP* scaled, int width, const Slice& slice, unsigned char* out) {
    constexpr size_t kFileOrder[] = {FI_RGBA_RED, FI_RGBA_GREEN, FI_RGBA_BLUE, FI_RGBA_ALPHA};
    static const BYTE zeros[4] = {};
    const int height = int(FreeImage_GetHeight(scaled));
    const BYTE* above = nullptr;
    for (int y = 0; y < slice.rows; ++y) {
        // the library keeps its rows bottom up
        const BYTE* row = FreeImage_GetScanLine(scaled, height - 1 - (slice.top + y));
        *out++ = PNG_FILTER_VALUE_UP;
        for (int x = 0; x < width; ++x, out += Channels) {
            const BYTE* pixel = row + size_t(x) * Channels;
            const BYTE* up = above ? above + size_t(x) * Channels : zeros;
            for (size_t c = 0; c < Channels; ++c)
                out[c] = BYTE(pixel[kFileOrder[c]] - up[kFileOrder[c]]);
        }
        above = row;
    }
}

struct CompressorDeleter {
    void operator()(libdeflate_compressor* c) const { libdeflate_free_compressor(c); }
};

// This thread's compressor at best compression; null when there is no memory for one.
libdeflate_compressor* bestCompressor() {
    thread_local const std::unique_ptr<libdeflate_compressor, CompressorDeleter> compressor(
        libdeflate_alloc_compressor(9));
    return compressor.get();
}

// Rows top .. top + rows of a 24- or 32-bit picture as a PNG file; the error text on failure.
QString writeTrueColourSlice(FIBITMAP* scaled, int width, const Slice& slice) {
    const bool alpha = FreeImage_GetBPP(scaled) == 32;
    const size_t rowBytes = 1 + size_t(width) * (alpha ? 4 : 3);
    std::vector<unsigned char> filtered(rowBytes * size_t(slice.rows));
    if (alpha)
        filterUp<4>(scaled, width, slice, filtered.data());
    else
        filterUp<3>(scaled, width, slice, filtered.data());
    libdeflate_compressor* compressor = bestCompressor();
    if (!compressor)
        return QStringLiteral("Cannot write %1: no memory to compress it.").arg(slice.file);
    std::vector<unsigned char> compressed(
        libdeflate_zlib_compress_bound(compressor, filtered.size()));
    compressed.resize(libdeflate_zlib_compress(compressor, filtered.data(), filtered.size(),
                                               compressed.data(), compressed.size()));
    if (compressed.empty()) // cannot happen with room for the bound
        return QStringLiteral("Cannot write %1: its compression failed.").arg(slice.file);
    const PngImage in{compressed.data(),
                      compressed.size(),
                      png_uint_32(width),
                      png_uint_32(slice.rows),
                      alpha ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB,
                      FreeImage_GetDotsPerMeterX(scaled),
                      FreeImage_GetDotsPerMeterY(scaled)};

    const QByteArray name = QFile::encodeName(slice.file);
    FILE* file = std::fopen(name.constData(), "wb");
    if (!file)
        return QStringLiteral("Cannot write %1: %2.")
            .arg(slice.file, QString::fromLocal8Bit(std::strerror(errno)));
    PngError error;
    bool ok = encodePng(file, in, error);
    ok = std::fclose(file) == 0 && ok;
    if (ok)
        return {};
    QFile::remove(slice.file);
    return QStringLiteral("Cannot write %1: %2.")
        .arg(slice.file, error.text[0] ? QString::fromLocal8Bit(error.text)
                                       : QStringLiteral("the disk refused the data"));
}

// --- The rescale on every core ----------------------------------------------------------------
//
// The image library's Lanczos3 filters in one direction, then in the other: across first when
// the width shrinks, down first when it grows, and it skips a pass that keeps its size. A pass
// across treats every row alike and a pass down every column alike, so each pass is cut into
// bands along the direction it leaves alone, each band is filtered on a thread of its own
// through a view of the picture, and the bands are joined: the result is the library's own,
// byte for byte, in a fraction of the time.

// [from, to) of `total` for band k of n.
std::pair<int, int> bandOf(int total, int k, int n) {
    return {int(qint64(total) * k / n), int(qint64(total) * (k + 1) / n)};
}

// One pass over `src` on `n` threads: across (to `width`, keeping the rows) or down (to
// `height`, keeping the columns). Null when the library fails.
Bitmap passInBands(FIBITMAP* src, int width, int height, bool across, int n) {
    const int srcWidth = int(FreeImage_GetWidth(src)), srcHeight = int(FreeImage_GetHeight(src));
    const unsigned bpp = FreeImage_GetBPP(src);
    Bitmap out(FreeImage_Allocate(width, height, int(bpp)));
    if (!out)
        return nullptr;
    const unsigned pixelBytes = bpp / 8;
    std::vector<Bitmap> bands(static_cast<size_t>(n));
    std::vector<std::thread> threads;
    for (int k = 0; k < n; ++k) {
        threads.emplace_back([&, k] {
            const auto [from, to] = bandOf(across ? srcHeight : srcWidth, k, n);
            const Bitmap view(across ? FreeImage_CreateView(src, 0, unsigned(from),
                                                            unsigned(srcWidth), unsigned(to))
                                     : FreeImage_CreateView(src, unsigned(from), 0, unsigned(to),
                                                            unsigned(srcHeight)));
            if (view)
                bands[size_t(k)].reset(FreeImage_Rescale(view.get(), across ? width : to - from,
                                                         across ? to - from : height,
                                                         FILTER_LANCZOS3));
        });
    }
    for (std::thread& t : threads)
        t.join();
    for (int k = 0; k < n; ++k) {
        FIBITMAP* band = bands[size_t(k)].get();
        if (!band)
            return nullptr;
        const auto [from, to] = bandOf(across ? srcHeight : srcWidth, k, n);
        const int bandHeight = int(FreeImage_GetHeight(band));
        for (int y = 0; y < bandHeight; ++y) { // rows counted from the top
            const int outRow = across ? from + y : y;
            BYTE* target = FreeImage_GetScanLine(out.get(), height - 1 - outRow) +
                           (across ? 0 : size_t(from) * pixelBytes);
            std::memcpy(target, FreeImage_GetScanLine(band, bandHeight - 1 - y),
                        size_t(across ? width : to - from) * pixelBytes);
        }
    }
    return out;
}

Bitmap rescale(FIBITMAP* src, int width, int height) {
    const int srcWidth = int(FreeImage_GetWidth(src)), srcHeight = int(FreeImage_GetHeight(src));
    const int cores = int(std::clamp(std::thread::hardware_concurrency(), 1u, 8u));
    const unsigned bpp = FreeImage_GetBPP(src);
    // Other kinds of picture change depth or palette on the way; small ones are not worth it.
    if (cores < 2 || FreeImage_GetImageType(src) != FIT_BITMAP || (bpp != 24 && bpp != 32) ||
        qint64(srcWidth) * srcHeight < 1'000'000)
        return Bitmap(FreeImage_Rescale(src, width, height, FILTER_LANCZOS3));
    Bitmap step;
    FIBITMAP* current = src;
    // One pass, unless it keeps its size; false when the library fails.
    const auto pass = [&](bool across) {
        const int w = across ? width : int(FreeImage_GetWidth(current));
        const int h = across ? int(FreeImage_GetHeight(current)) : height;
        if (w == int(FreeImage_GetWidth(current)) && h == int(FreeImage_GetHeight(current)))
            return true;
        step = passInBands(current, w, h, across, std::min(cores, across ? h : w));
        current = step.get();
        return current != nullptr;
    };
    const bool acrossFirst = width <= srcWidth;
    if (!pass(acrossFirst) || !pass(!acrossFirst))
        return nullptr;
    return current == src ? Bitmap(FreeImage_Clone(src)) : std::move(step);
}

// Cuts one slice out of the scaled picture and saves it; the error text when that fails.
QString saveSlice(FIBITMAP* scaled, int width, const Slice& slice) {
    if (writesDirectly(scaled))
        return writeTrueColourSlice(scaled, width, slice);
    MessageCapture messages;
    Bitmap part(FreeImage_Copy(scaled, 0, slice.top, width, slice.top + slice.rows));
    if (!part)
        return messages.orElse(QStringLiteral("Cannot cut rows %1 to %2 of the scaled picture.")
                                   .arg(slice.top)
                                   .arg(slice.top + slice.rows));
    const Bitmap storable = storableAsPng(std::move(part));
    if (!storable)
        return messages.orElse(QStringLiteral("Cannot convert a slice to a depth PNG can store."));
    if (!FreeImage_Save(FIF_PNG, storable.get(), QFile::encodeName(slice.file).constData(),
                        PNG_Z_BEST_COMPRESSION))
        return messages.orElse(QStringLiteral("Cannot write %1.").arg(slice.file));
    return {};
}

// Saves the slices on every core. The calling thread only reports progress, so the callback never
// runs on another thread. Returns the error, or sets `cancelled`; files written are listed.
QString saveSlices(FIBITMAP* scaled, int width, const std::vector<Slice>& slices,
                   const SliceProgress& progress, bool& cancelled, QStringList& written) {
    const int total = int(slices.size());
    std::vector<int> work;
    for (int i = 0; i < total; ++i) {
        QFile::remove(slices[i].file);
        if (slices[i].rows > 0) {
            work.push_back(i);
            continue;
        }
        QFile empty(slices[i].file);
        if (!empty.open(QIODevice::WriteOnly))
            return QStringLiteral("Cannot write %1: %2").arg(slices[i].file, empty.errorString());
        written << slices[i].file;
    }
    int done = total - int(work.size()); // the zero-row slice needs no work
    if (progress && !progress(done, total)) {
        cancelled = true;
        return {};
    }

    std::mutex mutex;
    std::condition_variable finished;
    std::deque<std::pair<int, QString>> outcomes; // slice index, error text
    std::atomic<size_t> next{0};
    std::atomic<bool> stop{false};
    const auto worker = [&] {
        for (size_t k = next++; k < work.size() && !stop; k = next++) {
            QString error = saveSlice(scaled, width, slices[work[k]]);
            const std::lock_guard lock(mutex);
            outcomes.emplace_back(work[k], std::move(error));
            finished.notify_one();
        }
    };
    const size_t threads = std::clamp<size_t>(std::thread::hardware_concurrency(), 1,
                                              std::max<size_t>(work.size(), 1));
    std::vector<std::thread> pool;
    for (size_t t = 0; t < threads; ++t)
        pool.emplace_back(worker);

    QString firstError;
    size_t reported = 0;
    while (reported < work.size() && !stop) {
        std::unique_lock lock(mutex);
        finished.wait(lock, [&] { return !outcomes.empty(); });
        auto [index, error] = std::move(outcomes.front());
        outcomes.pop_front();
        lock.unlock();
        ++reported;
        if (error.isEmpty()) {
            written << slices[index].file;
            ++done;
            if (progress && !progress(done, total)) {
                cancelled = true;
                stop = true;
            }
        } else {
            firstError = error;
            stop = true;
        }
    }
    for (std::thread& t : pool)
        t.join();
    // Slices finished after the stop still count as written, so they are removed too.
    for (const auto& [index, error] : outcomes) {
        if (error.isEmpty())
            written << slices[index].file;
    }
    return firstError;
}

void removeFiles(const QStringList& files) {
    for (const QString& f : files)
        QFile::remove(f);
}

} // namespace

float fieldValue(QStringView text) {
    return float(bFunctions::Val(text));
}

SliceCheck checkSliceInput(const QString& imagePath, float width, float sliceHeight) {
    if (!bFunctions::FileExist(imagePath))
        return SliceCheck::MissingFile;
    if (width == 0)
        return SliceCheck::NoWidth;
    if (sliceHeight == 0)
        return SliceCheck::NoSliceHeight;
    return SliceCheck::Ok;
}

std::vector<Slice> planSlices(int scaledHeight, float sliceHeight, const QString& workFolder) {
    std::vector<Slice> slices;
    const std::optional<int> step = toPixels(sliceHeight, 1e9);
    if (!step || scaledHeight < 0)
        return slices;
    const int h = *step;
    for (qint64 y = 0; y <= scaledHeight; y += h) {
        Slice s;
        s.top = int(y);
        if (double(y) + double(sliceHeight) <= scaledHeight) {
            // A slice height under 100 would reach past the picture's end: cut there.
            s.rows = int(std::min<qint64>(kSliceRows, scaledHeight - y));
            s.declaredHeight = sliceHeight;
        } else {
            s.rows = int(scaledHeight - y);
            s.declaredHeight = float(s.rows);
        }
        s.file = workFolder + QStringLiteral("imgCrop%1.png").arg(slices.size() + 1);
        slices.push_back(s);
    }
    return slices;
}

QByteArray slicedPage(const QString& workFolder, float width, const std::vector<Slice>& slices) {
    const QByteArray w = singleText(width);
    const QByteArray folder = workFolder.toUtf8(); // the page declares UTF-8
    QByteArray page;
    const auto line = [&page](const QByteArray& text) { page += text + "\r\n"; };
    line(R"(<!DOCTYPE HTML PUBLIC "-//W3C//DTD HTML 4.01//EN")");
    line(R"(    "http://www.w3.org/TR/html4/strict.dtd">)");
    line("<html>");
    line("<head>");
    line(R"(<meta http-equiv="content-type" content="text/html; charset=UTF-8">)"
         R"(<meta charset="utf-8"><style>)");
    for (const char* selector : {"img {", "table {", "td {"}) {
        line(selector);
        line("  border:0; ");
        line("  margin:0; padding:0;");
        if (qstrcmp(selector, "img {") == 0)
            line("/*display:block;*/");
        line("}");
    }
    line("</style>");
    line("</head>");
    line("<body>");
    line("<table id='container' align='center' widht='" + w +
         "px' vspace='0' hspace='0' cellpadding='0' cellspacing='0'>");
    line("<tbody>");
    for (size_t i = 0; i < slices.size(); ++i) {
        const QByteArray n = QByteArray::number(qulonglong(i + 1));
        line("<tr><td><img src='" + folder + "imgCrop" + n + ".png' alt='Sezione " + n +
             "' width='" + w + "' height='" + singleText(slices[i].declaredHeight) +
             "' border=0 vpsace=0 hspace=0 >");
        line("</td></tr>");
    }
    line("</tbody></table>");
    line("</body>");
    line("</html>");
    line("");
    return page;
}

SliceResult sliceImage(const QString& imagePath, float width, float sliceHeight,
                       const QString& workFolder, const SliceProgress& progress) {
    initialiseLibrary();
    MessageCapture messages;
    SliceResult result;
    const QString folder = workFolder.endsWith(u'/') ? workFolder : workFolder + u'/';
    result.pageFile = folder + QStringLiteral("tmpTransImg.html");

    switch (checkSliceInput(imagePath, width, sliceHeight)) {
    case SliceCheck::MissingFile:
        result.error = QStringLiteral("Change file please.");
        return result;
    case SliceCheck::NoWidth:
        result.error = QStringLiteral("Value error, change value Max Width.");
        return result;
    case SliceCheck::NoSliceHeight:
        result.error = QStringLiteral("Value error, change value Height Section.");
        return result;
    case SliceCheck::Ok:
        break;
    }
    const std::optional<int> scaledWidth = toPixels(width, double(kMaxPixels));
    if (!scaledWidth) {
        result.error = QStringLiteral("Value error, change value Max Width.");
        return result;
    }
    if (!toPixels(sliceHeight, 1e9)) {
        result.error = QStringLiteral("Value error, change value Height Section.");
        return result;
    }
    const Format format = formatByExtension(imagePath);
    if (format.fif == FIF_UNKNOWN) {
        result.error =
            QStringLiteral("%1 is not a PNG, GIF or JPEG picture (.png, .gif, .jpg, .jpeg).")
                .arg(imagePath);
        return result;
    }

    const QByteArray path = QFile::encodeName(imagePath);
    const qint64 declared = declaredPixels(path, format, imagePath);
    if (declared > kMaxPixels) {
        result.error =
            QStringLiteral("The picture %1 declares %2 pixels, more than the %3 allowed.")
                .arg(imagePath)
                .arg(declared)
                .arg(kMaxPixels);
        return result;
    }
    messages.clear();
    Bitmap source(FreeImage_Load(format.fif, path.constData(), format.flags));
    if (!source || !FreeImage_HasPixels(source.get())) {
        result.error =
            messages.orElse(QStringLiteral("Cannot read the picture %1.").arg(imagePath));
        return result;
    }
    const unsigned sourceWidth = FreeImage_GetWidth(source.get());
    const unsigned sourceHeight = FreeImage_GetHeight(source.get());
    if (qint64(sourceWidth) * sourceHeight > kMaxPixels || sourceWidth == 0) {
        result.error = QStringLiteral("The picture %1 is larger than %2 pixels.")
                           .arg(imagePath)
                           .arg(kMaxPixels);
        return result;
    }
    // The height follows the aspect ratio; at least one row.
    const double height =
        std::max(1.0, std::nearbyint(double(sourceHeight) * *scaledWidth / double(sourceWidth)));
    if (double(*scaledWidth) * height > double(kMaxPixels)) {
        result.error =
            QStringLiteral("Scaled to %1 pixels wide the picture would be larger than %2 pixels.")
                .arg(*scaledWidth)
                .arg(kMaxPixels);
        return result;
    }
    messages.clear();
    const Bitmap scaled = rescale(source.get(), *scaledWidth, int(height));
    source.reset();
    if (!scaled) {
        result.error =
            messages.orElse(QStringLiteral("Cannot scale the picture %1.").arg(imagePath));
        return result;
    }
    result.scaledWidth = *scaledWidth;
    result.scaledHeight = int(height);

    if (!QDir().mkpath(folder)) {
        result.error = QStringLiteral("Cannot create the folder %1.").arg(folder);
        return result;
    }
    result.slices = planSlices(result.scaledHeight, sliceHeight, folder);
    QStringList written;
    result.error = saveSlices(scaled.get(), result.scaledWidth, result.slices, progress,
                              result.cancelled, written);
    if (!result.ok()) {
        removeFiles(written);
        return result;
    }

    const QByteArray page = slicedPage(folder, width, result.slices);
    QFile::remove(result.pageFile);
    QFile out(result.pageFile);
    if (!out.open(QIODevice::WriteOnly) || out.write(page) != page.size()) {
        result.error =
            QStringLiteral("Cannot write %1: %2").arg(result.pageFile, out.errorString());
        out.close();
        QFile::remove(result.pageFile);
        removeFiles(written);
    }
    return result;
}

} // namespace quillora::tools
