#include "core/message/PictureFormat.h"

#include <FreeImage.h>

#include <mutex>

namespace quillora::PictureFormat {

namespace {

constexpr qint64 kMaxPixels = 100'000'000;

void initialise() {
    static std::once_flag once;
    std::call_once(once, [] { FreeImage_Initialise(FALSE); });
}

// A read-only memory stream over the bytes (the library never writes through it).
class Memory {
public:
    explicit Memory(QByteArrayView bytes)
        : m_stream(FreeImage_OpenMemory(reinterpret_cast<BYTE*>(const_cast<char*>(bytes.data())),
                                        DWORD(bytes.size()))) {}
    ~Memory() { FreeImage_CloseMemory(m_stream); }
    Memory(const Memory&) = delete;
    Memory& operator=(const Memory&) = delete;
    FIMEMORY* get() const { return m_stream; }

private:
    FIMEMORY* m_stream;
};

FREE_IMAGE_FORMAT formatOf(QByteArrayView bytes) {
    if (bytes.isEmpty() || bytes.size() > qsizetype(0x7fffffff))
        return FIF_UNKNOWN;
    initialise();
    Memory m(bytes);
    return FreeImage_GetFileTypeFromMemory(m.get(), 0);
}

} // namespace

bool showableInMail(QByteArrayView bytes) {
    const FREE_IMAGE_FORMAT f = formatOf(bytes);
    return f == FIF_PNG || f == FIF_JPEG || f == FIF_GIF;
}

bool readable(QByteArrayView bytes) {
    const FREE_IMAGE_FORMAT f = formatOf(bytes);
    return f != FIF_UNKNOWN && FreeImage_FIFSupportsReading(f);
}

std::optional<QByteArray> toPng(QByteArrayView bytes) {
    const FREE_IMAGE_FORMAT f = formatOf(bytes);
    if (f == FIF_UNKNOWN || !FreeImage_FIFSupportsReading(f))
        return std::nullopt;
    Memory in(bytes);
    // A few bytes can declare gigabytes of pixels: the size is read first where the format
    // allows it, and a picture larger than any mail would show is not decoded.
    if (FreeImage_FIFSupportsNoPixels(f)) {
        FIBITMAP* header = FreeImage_LoadFromMemory(f, in.get(), FIF_LOAD_NOPIXELS);
        if (!header)
            return std::nullopt;
        const qint64 pixels = qint64(FreeImage_GetWidth(header)) * FreeImage_GetHeight(header);
        FreeImage_Unload(header);
        if (pixels > kMaxPixels)
            return std::nullopt;
        FreeImage_SeekMemory(in.get(), 0, SEEK_SET);
    }
    FIBITMAP* picture = FreeImage_LoadFromMemory(f, in.get(), 0);
    if (!picture)
        return std::nullopt;
    // PNG takes 8-bit palettes, 24 and 32 bits; anything else (16-bit, CMYK...) goes to 24 bits.
    const unsigned bpp = FreeImage_GetBPP(picture);
    if (FreeImage_GetImageType(picture) != FIT_BITMAP ||
        (bpp != 1 && bpp != 4 && bpp != 8 && bpp != 24 && bpp != 32)) {
        FIBITMAP* converted = FreeImage_ConvertTo24Bits(picture);
        FreeImage_Unload(picture);
        picture = converted;
        if (!picture)
            return std::nullopt;
    }
    FIMEMORY* out = FreeImage_OpenMemory();
    std::optional<QByteArray> png;
    if (FreeImage_SaveToMemory(FIF_PNG, picture, out, PNG_Z_BEST_COMPRESSION)) {
        BYTE* data = nullptr;
        DWORD size = 0;
        if (FreeImage_AcquireMemory(out, &data, &size))
            png = QByteArray(reinterpret_cast<const char*>(data), qsizetype(size));
    }
    FreeImage_CloseMemory(out);
    FreeImage_Unload(picture);
    return png;
}

QString withPngExtension(const QString& fileName) {
    const qsizetype dot = fileName.lastIndexOf(u'.');
    return (dot > 0 ? fileName.left(dot) : fileName) + QStringLiteral(".png");
}

} // namespace quillora::PictureFormat
