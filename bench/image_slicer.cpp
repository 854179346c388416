// The image slicer on a tall newsletter picture (1200 x 24000 JPEG → 600 wide, 120 slices of
// 100 rows, PNG at best compression), timed beside the same work done by vips and ImageMagick
// when they are installed. A plain program: each tool is an external process or a whole
// conversion, so the median of a few runs is the figure.
#include "core/tools/ImageSlicer.h"

#include <FreeImage.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <optional>
#include <vector>

namespace {

constexpr int kRuns = 3;

// Gradients, bands of dark "text" bars on light paper, and photo-like noisy blocks.
bool writeNewsletterJpeg(const QString& path) {
    const int width = 1200, height = 24000;
    FIBITMAP* dib = FreeImage_Allocate(width, height, 24);
    unsigned seed = 12345;
    for (int y = 0; y < height; ++y) {
        BYTE* line = FreeImage_GetScanLine(dib, height - 1 - y);
        const int section = (y / 1500) % 3;
        for (int x = 0; x < width; ++x) {
            seed = seed * 1103515245u + 12345u;
            const int noise = int(seed >> 26) - 32;
            int r, g, b;
            if (section == 0) { // gradient header
                r = x * 255 / width;
                g = (y % 1500) * 255 / 1500;
                b = 160;
            } else if (section == 1) { // text lines: bars of words on white
                const bool ink = (y % 24) < 14 && (x % 90) < 70 && ((x / 90 + y / 24) % 7) != 0;
                r = g = b = ink ? 30 : 250;
            } else { // photo: smooth shapes plus grain
                r = 128 + int(100 * ((x * 3 + y) % 400) / 400) - 50 + noise;
                g = 100 + ((x ^ y) & 63) + noise;
                b = 90 + (y % 255) / 3 + noise;
            }
            line[x * 3 + FI_RGBA_RED] = BYTE(std::clamp(r, 0, 255));
            line[x * 3 + FI_RGBA_GREEN] = BYTE(std::clamp(g, 0, 255));
            line[x * 3 + FI_RGBA_BLUE] = BYTE(std::clamp(b, 0, 255));
        }
    }
    const bool ok =
        FreeImage_Save(FIF_JPEG, dib, QFile::encodeName(path).constData(), JPEG_QUALITYGOOD);
    FreeImage_Unload(dib);
    return ok;
}

// The median of kRuns timings in seconds; nothing when a run fails.
std::optional<double> median(const std::function<bool()>& run) {
    std::vector<double> seconds;
    for (int i = 0; i < kRuns; ++i) {
        QElapsedTimer timer;
        timer.start();
        if (!run())
            return std::nullopt;
        seconds.push_back(double(timer.nsecsElapsed()) / 1e9);
    }
    std::sort(seconds.begin(), seconds.end());
    return seconds[seconds.size() / 2];
}

bool runTool(const QString& program, const QStringList& args, const QString& folder) {
    QProcess p;
    p.setWorkingDirectory(folder);
    p.start(program, args);
    if (!p.waitForFinished(-1) || p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0) {
        std::fprintf(stderr, "%s failed: %s\n", qPrintable(program),
                     p.readAllStandardError().constData());
        return false;
    }
    return true;
}

QString findTool(const QString& name) {
    const QString system = QStandardPaths::findExecutable(name, {QStringLiteral("/usr/bin")});
    return system.isEmpty() ? QStandardPaths::findExecutable(name) : system;
}

void report(const char* what, const std::optional<double>& seconds,
            const std::optional<double>& reference) {
    if (!seconds) {
        std::printf("%-34s not measured\n", what);
        return;
    }
    if (reference)
        std::printf("%-34s %8.3f s   %5.2fx vips\n", what, *seconds, *seconds / *reference);
    else
        std::printf("%-34s %8.3f s\n", what, *seconds);
}

} // namespace

int main() {
    QTemporaryDir dir;
    const QString input = dir.filePath(QStringLiteral("newsletter.jpg"));
    if (!dir.isValid() || !writeNewsletterJpeg(input)) {
        std::fprintf(stderr, "cannot write the test picture\n");
        return 1;
    }
    std::printf("input: 1200 x 24000 JPEG, %lld bytes; median of %d runs\n", QFile(input).size(),
                kRuns);

    const QString work = dir.filePath(QStringLiteral("slices/"));
    int slices = 0;
    const auto slicer = median([&] {
        QDir(work).removeRecursively();
        const quillora::tools::SliceResult r = quillora::tools::sliceImage(input, 600, 100, work);
        slices = int(r.slices.size());
        if (!r.ok())
            std::fprintf(stderr, "slicer failed: %s\n", qPrintable(r.error));
        return r.ok();
    });

    std::optional<double> vips, magick;
    const QString vipsTool = findTool(QStringLiteral("vips"));
    if (!vipsTool.isEmpty()) {
        vips = median([&] {
            return runTool(vipsTool,
                           {QStringLiteral("resize"), input,
                            dir.filePath(QStringLiteral("vips.png[compression=9]")),
                            QStringLiteral("0.5"), QStringLiteral("--kernel"),
                            QStringLiteral("lanczos3")},
                           dir.path());
        });
    }
    const QString convertTool = findTool(QStringLiteral("convert"));
    if (!convertTool.isEmpty()) {
        const QString out = dir.filePath(QStringLiteral("magick/"));
        magick = median([&] {
            QDir(out).removeRecursively();
            QDir().mkpath(out);
            return runTool(convertTool,
                           {input, QStringLiteral("-resize"), QStringLiteral("600x"),
                            QStringLiteral("-crop"), QStringLiteral("600x100"),
                            QStringLiteral("+repage"), QStringLiteral("-define"),
                            QStringLiteral("png:compression-level=9"), out + "out-%d.png"},
                           out);
        });
    }

    std::printf("slices written by the slicer: %d\n", slices);
    report("slicer (sliceImage)", slicer, vips);
    report("vips resize, one PNG", vips, vips);
    report("ImageMagick resize + crop", magick, vips);
    return slicer ? 0 : 1;
}
