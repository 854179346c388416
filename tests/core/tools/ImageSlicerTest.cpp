#include "core/tools/ImageSlicer.h"
#include "core/TestFiles.h"

#include <FreeImage.h>

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <thread>

using namespace quillora;
using namespace quillora::tools;

namespace {

struct BitmapDeleter {
    void operator()(FIBITMAP* dib) const { FreeImage_Unload(dib); }
};
using Bitmap = std::unique_ptr<FIBITMAP, BitmapDeleter>;

// A picture whose every row and column differs, with some noise, so a misplaced or resampled
// row shows.
Bitmap makePicture(int width, int height, int bpp = 24) {
    Bitmap dib(FreeImage_Allocate(width, height, bpp));
    const int bytes = bpp / 8;
    for (int y = 0; y < height; ++y) {
        BYTE* line = FreeImage_GetScanLine(dib.get(), height - 1 - y); // bottom-up storage
        for (int x = 0; x < width; ++x) {
            const unsigned noise = (unsigned(x) * 2654435761u) ^ (unsigned(y) * 40503u);
            BYTE* p = line + x * bytes;
            p[FI_RGBA_RED] = BYTE(x * 255 / std::max(1, width - 1));
            p[FI_RGBA_GREEN] = BYTE(y * 7);
            p[FI_RGBA_BLUE] = BYTE(noise >> 11);
            if (bytes == 4)
                p[FI_RGBA_ALPHA] = BYTE(128 + (y & 63));
        }
    }
    return dib;
}

void save(FIBITMAP* dib, FREE_IMAGE_FORMAT fif, const QString& path, int flags = 0) {
    ASSERT_TRUE(FreeImage_Save(fif, dib, QFile::encodeName(path).constData(), flags))
        << path.toStdString();
}

Bitmap loadPng(const QString& path) {
    return Bitmap(FreeImage_Load(FIF_PNG, QFile::encodeName(path).constData(), PNG_DEFAULT));
}

// The picture as the slicer's readers see it: a PNG of the given size.
QString writePng(const QString& path, int width, int height) {
    save(makePicture(width, height).get(), FIF_PNG, path);
    return path;
}

QStringList filesIn(const QString& folder) {
    return QDir(folder).entryList(QDir::Files | QDir::NoDotAndDotDot, QDir::Name);
}

quint32 crc32(const QByteArray& bytes) {
    quint32 crc = 0xFFFFFFFFu;
    for (const char c : bytes) {
        crc ^= quint8(c);
        for (int k = 0; k < 8; ++k)
            crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1)));
    }
    return ~crc;
}

void putBigEndian32(QByteArray& bytes, int at, quint32 value) {
    for (int k = 0; k < 4; ++k)
        bytes[at + k] = char(value >> (24 - 8 * k));
}

quint32 bigEndian32(const QByteArray& bytes, qsizetype at) {
    quint32 value = 0;
    for (int k = 0; k < 4; ++k)
        value = value << 8 | quint8(bytes[at + k]);
    return value;
}

// The names of a PNG file's chunks in order, "bad-crc" for one whose checksum is wrong; nothing
// when the signature is missing or the file ends inside a chunk.
QByteArrayList pngChunks(const QByteArray& png) {
    if (!png.startsWith("\x89PNG\r\n\x1a\n"))
        return {};
    QByteArrayList names;
    for (qsizetype at = 8; at < png.size();) {
        const quint32 length = png.size() - at >= 12 ? bigEndian32(png, at) : quint32(-1);
        if (length > png.size() - at - 12)
            return {};
        const QByteArray chunk = png.mid(at + 4, 4 + length); // the name, then the data
        names << (crc32(chunk) == bigEndian32(png, at + 8 + length) ? chunk.left(4) : "bad-crc");
        at += 12 + length;
    }
    return names;
}

class SlicerFolder : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(m_dir.isValid()); }
    QString path(const QString& name) const { return m_dir.path() + u'/' + name; }
    QString work() const { return m_dir.path() + QStringLiteral("/slices/"); }
    QTemporaryDir m_dir;
};

// --- The layout of the slices and the page ------------------------------------------------------

struct LayoutCase {
    const char* name;
    int sourceWidth, sourceHeight;
    float width, sliceHeight;
    int scaledHeight;
    std::vector<int> tops, rows;
    std::vector<const char*> heights; // as the page writes them
};

class SliceLayout : public SlicerFolder, public ::testing::WithParamInterface<LayoutCase> {};

TEST_P(SliceLayout, SlicesFilesAndPageRows) {
    const LayoutCase& c = GetParam();
    const QString source = writePng(path("picture.png"), c.sourceWidth, c.sourceHeight);
    // Files left from an earlier run never survive: each name is removed first.
    for (size_t n = 1; n <= c.rows.size(); ++n)
        writeBytes(work() + QStringLiteral("imgCrop%1.png").arg(n), "stale");

    const SliceResult r = sliceImage(source, c.width, c.sliceHeight, work());
    ASSERT_TRUE(r.ok()) << r.error.toStdString();
    EXPECT_EQ(r.scaledWidth, int(c.width));
    EXPECT_EQ(r.scaledHeight, c.scaledHeight);
    ASSERT_EQ(r.slices.size(), c.rows.size());

    const QByteArray page = readBytes(r.pageFile);
    qsizetype at = 0;
    QStringList expectedFiles{QStringLiteral("tmpTransImg.html")};
    for (size_t i = 0; i < c.rows.size(); ++i) {
        const Slice& s = r.slices[i];
        const QString file = work() + QStringLiteral("imgCrop%1.png").arg(i + 1);
        EXPECT_EQ(s.top, c.tops[i]) << i;
        EXPECT_EQ(s.rows, c.rows[i]) << i;
        EXPECT_EQ(s.file, file);
        const Bitmap png = loadPng(file);
        expectedFiles << QFileInfo(file).fileName();
        if (c.rows[i] == 0) {
            EXPECT_EQ(readBytes(file), QByteArray()) << "a slice without rows: an empty file";
        } else {
            ASSERT_TRUE(png) << file.toStdString();
            EXPECT_EQ(int(FreeImage_GetWidth(png.get())), int(c.width));
            EXPECT_EQ(int(FreeImage_GetHeight(png.get())), c.rows[i]);
        }
        const QByteArray row = "<img src='" + file.toUtf8() + "' alt='Sezione " +
                               QByteArray::number(qulonglong(i + 1)) + "' width='" +
                               QByteArray::number(int(c.width)) + "' height='" + c.heights[i] +
                               "' border=0 vpsace=0 hspace=0 >\r\n";
        at = page.indexOf(row, at);
        EXPECT_GE(at, 0) << "row " << i + 1 << ": " << row.toStdString();
    }
    expectedFiles.sort();
    EXPECT_EQ(filesIn(work()), expectedFiles);
    EXPECT_EQ(filesIn(m_dir.path()), QStringList{QStringLiteral("picture.png")})
        << "nothing is written beside the work folder";
}

// clang-format off
const LayoutCase kLayouts[] = {
    // name                               source     width slice scaled  tops            rows            page heights
    {"LastSliceShorter",                   600, 250,  600, 100,    250, {0, 100, 200}, {100, 100, 50},  {"100", "100", "50"}},
    {"ExactMultipleEndsWithEmptyRow",      600, 200,  600, 100,    200, {0, 100, 200}, {100, 100, 0},   {"100", "100", "0"}},
    {"TallerSlicesHoldTheirFirst100Rows",  600, 400,  600, 150,    400, {0, 150, 300}, {100, 100, 100}, {"150", "150", "100"}},
    {"NarrowPictureEnlarged",              300, 125,  600, 100,    250, {0, 100, 200}, {100, 100, 50},  {"100", "100", "50"}},
    {"WidePictureReduced",                1200, 500,  600, 100,    250, {0, 100, 200}, {100, 100, 50},  {"100", "100", "50"}},
    // 150.5 steps by 150 (half to even) but compares unrounded: the second pass is the last.
    {"FractionalSliceHeightWrittenAsTyped", 600, 300, 600, 150.5f, 300, {0, 150, 300}, {100, 150, 0},   {"150.5", "150", "0"}},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(ImageSlicer, SliceLayout, ::testing::ValuesIn(kLayouts),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(ImageSlicer, PageIsExact) {
    const QString folder = QStringLiteral("/tmp/work x/");
    const QByteArray page = slicedPage(folder, 600, planSlices(250, 100, folder));
    const QByteArray expected =
        "<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.01//EN\"\r\n"
        "    \"http://www.w3.org/TR/html4/strict.dtd\">\r\n"
        "<html>\r\n"
        "<head>\r\n"
        "<meta http-equiv=\"content-type\" content=\"text/html; charset=UTF-8\">"
        "<meta charset=\"utf-8\"><style>\r\n"
        "img {\r\n"
        "  border:0; \r\n"
        "  margin:0; padding:0;\r\n"
        "/*display:block;*/\r\n"
        "}\r\n"
        "table {\r\n"
        "  border:0; \r\n"
        "  margin:0; padding:0;\r\n"
        "}\r\n"
        "td {\r\n"
        "  border:0; \r\n"
        "  margin:0; padding:0;\r\n"
        "}\r\n"
        "</style>\r\n"
        "</head>\r\n"
        "<body>\r\n"
        "<table id='container' align='center' widht='600px' vspace='0' hspace='0' "
        "cellpadding='0' cellspacing='0'>\r\n"
        "<tbody>\r\n"
        "<tr><td><img src='/tmp/work x/imgCrop1.png' alt='Sezione 1' width='600' height='100' "
        "border=0 vpsace=0 hspace=0 >\r\n"
        "</td></tr>\r\n"
        "<tr><td><img src='/tmp/work x/imgCrop2.png' alt='Sezione 2' width='600' height='100' "
        "border=0 vpsace=0 hspace=0 >\r\n"
        "</td></tr>\r\n"
        "<tr><td><img src='/tmp/work x/imgCrop3.png' alt='Sezione 3' width='600' height='50' "
        "border=0 vpsace=0 hspace=0 >\r\n"
        "</td></tr>\r\n"
        "</tbody></table>\r\n"
        "</body>\r\n"
        "</html>\r\n"
        "\r\n";
    EXPECT_EQ(page.toStdString(), expected.toStdString());
}

TEST(ImageSlicer, PageWritesTheTypedWidth) {
    const QByteArray page = slicedPage(QStringLiteral("/w/"), 612.5f, planSlices(90, 100, "/w/"));
    EXPECT_TRUE(page.contains("widht='612.5px'"));
    EXPECT_TRUE(page.contains("width='612.5' height='90' "));
}

TEST_F(SlicerFolder, PageFileHoldsThePageOfTheSlices) {
    const QString source = writePng(path("p.png"), 600, 333);
    const SliceResult r = sliceImage(source, 600, 100, work());
    ASSERT_TRUE(r.ok()) << r.error.toStdString();
    EXPECT_EQ(r.pageFile, work() + QStringLiteral("tmpTransImg.html"));
    EXPECT_EQ(readBytes(r.pageFile), slicedPage(work(), 600, r.slices));
}

struct StackCase {
    const char* name;
    int width, height, bpp, scaledHeight;
};

class StackedSlices : public SlicerFolder, public ::testing::WithParamInterface<StackCase> {};

// With the minimum slice height the slices are the scaled picture cut into pieces: no row is
// lost, repeated or resampled again, transparency included, whether the picture shrinks or
// grows and whether it is small or large enough to be scaled on every core; each slice says the
// resolution the image library's own writer would, in a file of well-formed chunks in their order.
TEST_P(StackedSlices, AreTheRescaledPicture) {
    const StackCase& c = GetParam();
    const Bitmap original = makePicture(c.width, c.height, c.bpp);
    save(original.get(), FIF_PNG, path("p.png"));
    const SliceResult r = sliceImage(path("p.png"), 600, 100, work());
    ASSERT_TRUE(r.ok()) << r.error.toStdString();

    const Bitmap expected(FreeImage_Rescale(original.get(), 600, c.scaledHeight, FILTER_LANCZOS3));
    ASSERT_EQ(r.scaledHeight, c.scaledHeight);
    const unsigned lineBytes = FreeImage_GetLine(expected.get());
    int row = 0; // from the top
    for (const Slice& s : r.slices) {
        if (s.rows == 0)
            continue;
        const QByteArray chunks = pngChunks(readBytes(s.file)).join(' ');
        EXPECT_TRUE(QRegularExpression(QStringLiteral("^IHDR pHYs (IDAT )+IEND$"))
                        .match(QString::fromLatin1(chunks))
                        .hasMatch())
            << chunks.toStdString();
        const Bitmap png = loadPng(s.file);
        ASSERT_TRUE(png);
        ASSERT_EQ(FreeImage_GetBPP(png.get()), unsigned(c.bpp));
        ASSERT_EQ(FreeImage_GetLine(png.get()), lineBytes);
        EXPECT_EQ(FreeImage_GetDotsPerMeterX(png.get()),
                  FreeImage_GetDotsPerMeterX(expected.get()));
        EXPECT_EQ(FreeImage_GetDotsPerMeterY(png.get()),
                  FreeImage_GetDotsPerMeterY(expected.get()));
        for (int y = 0; y < s.rows; ++y, ++row) {
            const BYTE* got = FreeImage_GetScanLine(png.get(), s.rows - 1 - y);
            const BYTE* want = FreeImage_GetScanLine(expected.get(), c.scaledHeight - 1 - row);
            ASSERT_EQ(std::memcmp(got, want, lineBytes), 0)
                << "row " << row << " of " << s.file.toStdString();
        }
    }
    EXPECT_EQ(row, c.scaledHeight);
}

INSTANTIATE_TEST_SUITE_P(ImageSlicer, StackedSlices,
                         ::testing::Values(StackCase{"Small", 641, 777, 24, 727},
                                           StackCase{"SmallTransparent", 641, 777, 32, 727},
                                           StackCase{"LargeShrinking", 1283, 900, 24, 421},
                                           StackCase{"LargeTransparent", 1283, 900, 32, 421},
                                           StackCase{"LargeGrowing", 500, 2100, 24, 2520}),
                         [](const auto& info) { return std::string(info.param.name); });

// --- Checks before any work ---------------------------------------------------------------------

struct CheckCase {
    const char* name;
    bool fileExists;
    float width, sliceHeight;
    SliceCheck expected;
    const char* error;
};

class SliceChecks : public SlicerFolder, public ::testing::WithParamInterface<CheckCase> {};

TEST_P(SliceChecks, RefuseInOrderAndWriteNothing) {
    const CheckCase& c = GetParam();
    const QString source = c.fileExists ? writePng(path("p.png"), 10, 10) : path("missing.png");
    EXPECT_EQ(checkSliceInput(source, c.width, c.sliceHeight), c.expected);
    const SliceResult r = sliceImage(source, c.width, c.sliceHeight, work());
    EXPECT_EQ(r.error, QString::fromUtf8(c.error));
    EXPECT_FALSE(QFileInfo::exists(work()));
}

INSTANTIATE_TEST_SUITE_P(
    ImageSlicer, SliceChecks,
    ::testing::Values(CheckCase{"MissingFileFirst", false, 0, 0, SliceCheck::MissingFile,
                                "Change file please."},
                      CheckCase{"ThenWidth", true, 0, 0, SliceCheck::NoWidth,
                                "Value error, change value Max Width."},
                      CheckCase{"ThenSliceHeight", true, 600, 0, SliceCheck::NoSliceHeight,
                                "Value error, change value Height Section."},
                      // Past the checks, values no pixel count can come from are refused as well.
                      CheckCase{"NegativeWidth", true, -600, 100, SliceCheck::Ok,
                                "Value error, change value Max Width."},
                      CheckCase{"SliceHeightUnderOnePixel", true, 600, 0.25f, SliceCheck::Ok,
                                "Value error, change value Height Section."}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(SlicerFolder, FolderIsNotAPictureFile) {
    ASSERT_TRUE(QDir().mkpath(path("dir.png")));
    EXPECT_EQ(checkSliceInput(path("dir.png"), 600, 100), SliceCheck::MissingFile);
}

struct FieldCase {
    const char* text;
    float value;
};
class FieldValue : public ::testing::TestWithParam<FieldCase> {};
TEST_P(FieldValue, LeadingNumberOrZero) {
    EXPECT_FLOAT_EQ(fieldValue(QString::fromUtf8(GetParam().text)), GetParam().value);
}
INSTANTIATE_TEST_SUITE_P(ImageSlicer, FieldValue,
                         ::testing::Values(FieldCase{"600", 600}, FieldCase{"", 0},
                                           FieldCase{"abc", 0}, FieldCase{"450px", 450},
                                           FieldCase{" 1 50", 150}, FieldCase{"150.5", 150.5f},
                                           FieldCase{"-50", -50}));

// --- Formats by extension -----------------------------------------------------------------------

struct ExtensionCase {
    const char* file;
    FREE_IMAGE_FORMAT written;
    bool accepted;
};
class SliceExtensions : public SlicerFolder, public ::testing::WithParamInterface<ExtensionCase> {};

TEST_P(SliceExtensions, LoadOnlyPngGifJpegByLowerCaseExtension) {
    const ExtensionCase& c = GetParam();
    Bitmap picture = makePicture(60, 25);
    if (c.written == FIF_GIF)
        picture.reset(FreeImage_ColorQuantize(picture.get(), FIQ_WUQUANT));
    save(picture.get(), c.written, path(c.file));
    const SliceResult r = sliceImage(path(c.file), 600, 100, work());
    if (c.accepted) {
        EXPECT_TRUE(r.ok()) << r.error.toStdString();
        EXPECT_EQ(r.scaledHeight, 250);
    } else {
        EXPECT_TRUE(r.error.contains(QStringLiteral("is not a PNG, GIF or JPEG picture")))
            << r.error.toStdString();
        EXPECT_FALSE(QFileInfo::exists(work()));
    }
}

INSTANTIATE_TEST_SUITE_P(ImageSlicer, SliceExtensions,
                         ::testing::Values(ExtensionCase{"p.JPG", FIF_JPEG, true},
                                           ExtensionCase{"p.jpeg", FIF_JPEG, true},
                                           ExtensionCase{"p.Png", FIF_PNG, true},
                                           ExtensionCase{"p.GIF", FIF_GIF, true},
                                           ExtensionCase{"p.bmp", FIF_BMP, false},
                                           ExtensionCase{"p.png.bak", FIF_PNG, false},
                                           ExtensionCase{"png", FIF_PNG, false}),
                         [](const auto& info) {
                             QString name = QString::fromUtf8(info.param.file);
                             return name.replace(u'.', u'_').toStdString();
                         });

// --- Progress and cancelling --------------------------------------------------------------------

TEST_F(SlicerFolder, ProgressCountsEverySliceOnTheCallingThread) {
    const QString source = writePng(path("p.png"), 600, 1000);
    std::vector<int> done;
    bool otherThread = false;
    const auto caller = std::this_thread::get_id();
    const SliceResult r = sliceImage(source, 600, 100, work(), [&](int d, int total) {
        otherThread |= std::this_thread::get_id() != caller;
        EXPECT_EQ(total, 11);
        done.push_back(d);
        return true;
    });
    ASSERT_TRUE(r.ok()) << r.error.toStdString();
    EXPECT_FALSE(otherThread);
    ASSERT_FALSE(done.empty());
    EXPECT_TRUE(std::is_sorted(done.begin(), done.end()));
    EXPECT_EQ(done.back(), 11); // the zero-row slice counts as done
}

class SliceCancel : public SlicerFolder, public ::testing::WithParamInterface<int> {};

TEST_P(SliceCancel, RemovesWhatWasWritten) {
    const QString source = writePng(path("p.png"), 600, 2000);
    const int stopAt = GetParam();
    const SliceResult r =
        sliceImage(source, 600, 100, work(), [stopAt](int done, int) { return done < stopAt; });
    EXPECT_TRUE(r.cancelled);
    EXPECT_TRUE(r.error.isEmpty());
    EXPECT_FALSE(r.ok());
    EXPECT_EQ(filesIn(work()), QStringList());
}

INSTANTIATE_TEST_SUITE_P(ImageSlicer, SliceCancel, ::testing::Values(0, 1, 5, 20));

// --- Pictures of every kind, and broken ones ----------------------------------------------------

struct InputCase {
    const char* name;
    const char* file;
    std::function<QByteArray(const QString& folder)> bytes; // the picture file's content
    unsigned sliceBpp;                                      // 0: refused
    const char* error;                                      // part of the refusal
};

QByteArray encoded(FIBITMAP* dib, FREE_IMAGE_FORMAT fif, const QString& folder, int flags = 0) {
    const QString file = folder + QStringLiteral("/encoded.tmp");
    FreeImage_Save(fif, dib, QFile::encodeName(file).constData(), flags);
    QByteArray bytes = readBytes(file);
    QFile::remove(file);
    return bytes;
}

Bitmap ofType(FREE_IMAGE_TYPE type, int width, int height) {
    Bitmap dib(FreeImage_AllocateT(type, width, height));
    const unsigned words = FreeImage_GetLine(dib.get()) / 2;
    for (int y = 0; y < height; ++y) {
        auto* line = reinterpret_cast<WORD*>(FreeImage_GetScanLine(dib.get(), y));
        for (unsigned x = 0; x < words; ++x)
            line[x] = WORD(x * 977 + y * 131);
    }
    return dib;
}

// The PNG header's size fields, changed after the fact with a valid checksum: the picture claims
// a size its data does not hold.
QByteArray withDeclaredSize(QByteArray png, quint32 width, quint32 height) {
    putBigEndian32(png, 16, width);
    putBigEndian32(png, 20, height);
    putBigEndian32(png, 29, crc32(png.mid(12, 17)));
    return png;
}

class SliceInputs : public SlicerFolder, public ::testing::WithParamInterface<InputCase> {};

TEST_P(SliceInputs, ClearMessageOrCorrectSlices) {
    const InputCase& c = GetParam();
    writeBytes(path(c.file), c.bytes(m_dir.path()));
    const SliceResult r = sliceImage(path(c.file), 600, 100, work());
    if (c.sliceBpp == 0) {
        EXPECT_FALSE(r.ok());
        EXPECT_TRUE(r.error.contains(QString::fromUtf8(c.error))) << r.error.toStdString();
        EXPECT_EQ(filesIn(work()), QStringList());
        return;
    }
    ASSERT_TRUE(r.ok()) << r.error.toStdString();
    EXPECT_EQ(r.scaledHeight, 200);
    for (int n = 0; n < 2; ++n) {
        const Bitmap png = loadPng(r.slices[n].file);
        ASSERT_TRUE(png) << n;
        EXPECT_EQ(FreeImage_GetImageType(png.get()), FIT_BITMAP);
        EXPECT_EQ(FreeImage_GetBPP(png.get()), c.sliceBpp);
        EXPECT_EQ(FreeImage_GetWidth(png.get()), 600u);
        EXPECT_EQ(FreeImage_GetHeight(png.get()), 100u);
    }
}

INSTANTIATE_TEST_SUITE_P(
    ImageSlicer, SliceInputs,
    ::testing::Values(
        InputCase{
            "Rgba32Png", "p.png",
            [](const QString& d) { return encoded(makePicture(90, 30, 32).get(), FIF_PNG, d); }, 32,
            ""},
        InputCase{
            "Rgb48Png", "p.png",
            [](const QString& d) { return encoded(ofType(FIT_RGB16, 90, 30).get(), FIF_PNG, d); },
            24, ""},
        InputCase{
            "Grey16Png", "p.png",
            [](const QString& d) { return encoded(ofType(FIT_UINT16, 90, 30).get(), FIF_PNG, d); },
            8, ""},
        InputCase{
            "Rgba64Png", "p.png",
            [](const QString& d) { return encoded(ofType(FIT_RGBA16, 90, 30).get(), FIF_PNG, d); },
            32, ""},
        InputCase{"PalettedGif", "p.gif",
                  [](const QString& d) {
                      const Bitmap p(
                          FreeImage_ColorQuantize(makePicture(90, 30).get(), FIQ_WUQUANT));
                      return encoded(p.get(), FIF_GIF, d);
                  },
                  24, ""},
        InputCase{"OneBitPng", "p.png",
                  [](const QString& d) {
                      const Bitmap p(FreeImage_Threshold(makePicture(90, 30).get(), 128));
                      return encoded(p.get(), FIF_PNG, d);
                  },
                  8, ""},
        InputCase{"EmptyPng", "p.png", [](const QString&) { return QByteArray(); }, 0, ""},
        InputCase{"EmptyJpeg", "p.jpg", [](const QString&) { return QByteArray(); }, 0, ""},
        InputCase{"PngNamedJpeg", "p.jpg",
                  [](const QString& d) { return encoded(makePicture(90, 30).get(), FIF_PNG, d); },
                  0, "JPEG"},
        InputCase{"TruncatedPng", "p.png",
                  [](const QString& d) {
                      return encoded(makePicture(90, 30).get(), FIF_PNG, d).left(60);
                  },
                  0, ""},
        InputCase{"PngDeclaringGigapixels", "p.png",
                  [](const QString& d) {
                      return withDeclaredSize(encoded(makePicture(90, 30).get(), FIF_PNG, d), 60000,
                                              60000);
                  },
                  0, "pixels"},
        InputCase{"GifDeclaringGigapixels", "p.gif",
                  [](const QString& d) {
                      const Bitmap p(
                          FreeImage_ColorQuantize(makePicture(90, 30).get(), FIQ_WUQUANT));
                      QByteArray gif = encoded(p.get(), FIF_GIF, d);
                      gif[6] = gif[7] = gif[8] = gif[9] = char(0xFF);
                      return gif;
                  },
                  0, "pixels"},
        InputCase{
            "TallSliverScaledPastTheLimit", "p.png",
            [](const QString& d) { return encoded(makePicture(1, 200000).get(), FIF_PNG, d); }, 0,
            "Scaled to 600 pixels wide"}),
    [](const auto& info) { return std::string(info.param.name); });

// A JPEG cut short decodes to its end with the rest filled in, as browsers show it.
TEST_F(SlicerFolder, TruncatedJpegGivesFullSizeSlices) {
    const QByteArray jpeg = [&] {
        const Bitmap p = makePicture(300, 100);
        save(p.get(), FIF_JPEG, path("whole.jpg"), JPEG_QUALITYGOOD);
        return readBytes(path("whole.jpg"));
    }();
    writeBytes(path("cut.jpg"), jpeg.left(jpeg.size() / 2));
    const SliceResult r = sliceImage(path("cut.jpg"), 600, 100, work());
    ASSERT_TRUE(r.ok()) << r.error.toStdString();
    ASSERT_EQ(r.slices.size(), 3u);
    EXPECT_EQ(r.slices[1].rows, 100);
    const Bitmap second = loadPng(r.slices[1].file);
    ASSERT_TRUE(second);
    EXPECT_EQ(FreeImage_GetHeight(second.get()), 100u);
}

} // namespace
