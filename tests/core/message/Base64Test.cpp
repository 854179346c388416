#include "core/TestFiles.h"
#include "core/message/clsBase64.h"

#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <random>

using quillora::clsBase64;
using namespace Qt::StringLiterals;

namespace {

QByteArray randomBytes(qsizetype n, unsigned seed) {
    std::mt19937 gen(seed);
    QByteArray b(n, Qt::Uninitialized);
    for (char& c : b)
        c = char(gen());
    return b;
}

// The decoder's rules written the obvious way, as the oracle for both fast paths.
QByteArray referenceDecode(QByteArrayView text) {
    const QByteArray alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::array<quint32, 256> value{}; // everything else is 0
    for (int v = 0; v < 64; ++v)
        value[uchar(alphabet[v])] = quint32(v);
    QByteArray kept = text.toByteArray().replace("\r\n", "");
    kept.replace("=", "");
    QByteArray out;
    quint32 acc = 0;
    for (qsizetype i = 0; i < kept.size(); ++i) {
        acc = acc << 6 | value[uchar(kept[i])];
        if (i % 4 == 3)
            out.append(char(acc >> 16)).append(char(acc >> 8)).append(char(acc));
    }
    if (kept.size() % 4 == 2)
        out.append(char(acc >> 4));
    if (kept.size() % 4 == 3)
        out.append(char(acc >> 10)).append(char(acc >> 2));
    return out;
}

// Runs f with the portable code forced, then with the automatic choice (AVX2 where present).
template <class F> auto onBothPaths(F f) {
    clsBase64::setForcePortable(true);
    auto portable = f();
    clsBase64::setForcePortable(false);
    return std::pair{portable, f()};
}

QByteArray encodeAscii(const QByteArray& data) {
    QByteArray out(clsBase64::encodedLength(data.size()) + 16, '#');
    clsBase64::encode(reinterpret_cast<const uchar*>(data.data()), data.size(), out.data());
    return out;
}

// ---- Encoder ----

struct LengthCase {
    qsizetype bytes;
    qsizetype chars;
};

void PrintTo(const LengthCase& c, std::ostream* os) {
    *os << c.bytes << " bytes";
}

class EncodedLayout : public testing::TestWithParam<LengthCase> {};

TEST_P(EncodedLayout, LinesOf76JoinedByCrLfWithNoBreakAtTheEnd) {
    const auto [bytes, chars] = GetParam();
    const QByteArray data = randomBytes(bytes, unsigned(bytes));
    ASSERT_EQ(clsBase64::encodedLength(bytes), chars);
    const auto [portable, automatic] = onBothPaths([&] { return encodeAscii(data); });
    EXPECT_EQ(portable, automatic);
    // Nothing written past the end: the canary bytes are untouched.
    EXPECT_EQ(portable.sliced(chars), QByteArray(16, '#'));
    const QByteArray text = portable.first(chars);
    const QList<QByteArray> lines = text.split('\n');
    for (qsizetype k = 0; k + 1 < lines.size(); ++k)
        EXPECT_EQ(lines[k].size(), 77) << "line " << k; // 76 characters and the CR
    EXPECT_FALSE(text.endsWith('\n'));
    EXPECT_EQ(QByteArray(text).replace("\r\n", ""), data.toBase64());
}

INSTANTIATE_TEST_SUITE_P(Base64, EncodedLayout,
                         testing::Values(LengthCase{0, 0}, LengthCase{1, 4}, LengthCase{2, 4},
                                         LengthCase{3, 4}, LengthCase{56, 76}, LengthCase{57, 76},
                                         LengthCase{58, 82}, LengthCase{114, 154},
                                         LengthCase{115, 160}, LengthCase{57 * 100, 7798},
                                         LengthCase{57 * 100 + 1, 7804}));

TEST(Base64Encode, MatchesQtAndRoundTripsOnEveryPathAndWidth) {
    std::vector<qsizetype> sizes;
    for (qsizetype n = 0; n <= 300; ++n)
        sizes.push_back(n);
    sizes.insert(sizes.end(), {57 * 1024, 57 * 1024 + 1, 57 * 1024 + 61, (1 << 20) + 7});
    for (qsizetype n : sizes) {
        const QByteArray data = randomBytes(n, unsigned(n) + 1);
        const QString expected = clsBase64().EncodeByteArray(data);
        const auto [portable, automatic] = onBothPaths([&] {
            return std::pair{encodeAscii(data), clsBase64().EncodeByteArray(data)};
        });
        ASSERT_EQ(portable, automatic) << n;
        ASSERT_EQ(portable.second.toLatin1(), portable.first.first(expected.size())) << n;
        ASSERT_EQ(expected.toLatin1().replace("\r\n", ""), data.toBase64()) << n;
        const auto decoded = onBothPaths([&] {
            return std::pair{clsBase64::decode(QStringView(expected)),
                             clsBase64::decode(QByteArrayView(expected.toLatin1()))};
        });
        ASSERT_EQ(decoded.first.first, data) << n;
        ASSERT_EQ(decoded.first, decoded.second) << n;
        ASSERT_EQ(decoded.first.second, data) << n;
    }
}

TEST(Base64Encode, ProgressOnceWith57PerLineBreakAndSameText) {
    const QByteArray data = randomBytes(57 * 2500 + 3, 7);
    std::vector<float> calls;
    const clsBase64 reporting([&](float v) { calls.push_back(v); });
    EXPECT_EQ(reporting.EncodeByteArray(data), clsBase64().EncodeByteArray(data));
    EXPECT_EQ(qsizetype(calls.size()), 2500);
    EXPECT_TRUE(std::all_of(calls.begin(), calls.end(), [](float v) { return v == 57.0f; }));
    calls.clear();
    reporting.EncodeByteArray(randomBytes(57, 1));
    EXPECT_TRUE(calls.empty());
}

TEST(Base64Encode, StringsGoThroughWindows1252) {
    const QString text = QString::fromUtf8("Prezzo €à ✓");
    const QByteArray cp1252("Prezzo \x80\xE0 ?");
    EXPECT_EQ(clsBase64().EncodeString(text), clsBase64().EncodeByteArray(cp1252));
    EXPECT_EQ(clsBase64::DecodeToString(clsBase64().EncodeString(text)),
              QString::fromUtf8("Prezzo €à ?"));
}

// ---- Decoder ----

struct DecodeCase {
    const char* name;
    std::u16string text;
    QByteArray same; // clean text that must decode to the same bytes
};

void PrintTo(const DecodeCase& c, std::ostream* os) {
    *os << c.name;
}

class DecodeRules : public testing::TestWithParam<DecodeCase> {};

TEST_P(DecodeRules, DecodesLikeTheCleanEquivalent) {
    const auto& c = GetParam();
    const QByteArray expected = QByteArray::fromBase64(c.same);
    const QStringView wide(c.text);
    EXPECT_EQ(onBothPaths([&] { return clsBase64::DecodeToByteArray(wide); }),
              std::pair(expected, expected));
    bool narrow = std::all_of(c.text.begin(), c.text.end(), [](char16_t u) { return u < 256; });
    if (narrow) {
        const QByteArray latin1 = wide.toLatin1();
        EXPECT_EQ(onBothPaths([&] { return clsBase64::decode(QByteArrayView(latin1)); }),
                  std::pair(expected, expected));
        EXPECT_EQ(referenceDecode(latin1), expected);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Base64, DecodeRules,
    testing::Values(
        DecodeCase{"padded", u"TWE=", "TWE="}, DecodeCase{"unpadded_two", u"TWE", "TWE="},
        DecodeCase{"unpadded_one", u"TQ", "TQ=="},
        DecodeCase{"remainder_one_ignored", u"TWFuT", "TWFu"},
        DecodeCase{"equals_anywhere", u"T=W==Fu=", "TWFu"},
        DecodeCase{"crlf_pair_removed", u"TW\r\nFu\r\n", "TWFu"},
        DecodeCase{"lone_cr_is_zero", u"TW\rFu", "TWAF"},
        DecodeCase{"lone_lf_is_zero", u"TW\nFu", "TWAF"},
        DecodeCase{"lf_cr_is_not_a_pair", u"TW\n\rFuAA", "TWAAFuAA"},
        DecodeCase{"cr_before_pair", u"T\r\r\nWFu", "TAWF"},
        // The pairs go before the "=", so "=" removal does not make a new pair.
        DecodeCase{"equals_inside_cr_lf", u"T\r=\nWFu", "TAAWFu=="},
        DecodeCase{"blank_is_zero", u"TW Fu", "TWAF"},
        DecodeCase{"nul_is_zero", std::u16string(u"TW\0Fu", 5), "TWAF"},
        DecodeCase{"latin1_is_zero", u"TW\u00E9Fu", "TWAF"},
        DecodeCase{"wide_is_zero", u"TW\u20ACFu", "TWAF"},
        // Units whose low byte is CR, LF or "=" are "?" after conversion, not line breaks.
        DecodeCase{"wide_cr_lf_equals", u"T\u010D\u010AW\u013DF", "TAAWAF=="},
        DecodeCase{"surrogate_pair_is_one_char", u"TW\U0001F600Fu", "TWAF"},
        DecodeCase{"empty", u"", ""}),
    [](const auto& info) { return std::string(info.param.name); });

// Every byte value at every position of a line and the next one's start, on both paths:
// each of the vector and table fast paths must give way to the exact rules at that point.
TEST(Base64Decode, StrayByteAtEveryPositionOfABlock) {
    const QByteArray clean = clsBase64().EncodeByteArray(randomBytes(57 * 3, 11)).toLatin1();
    for (qsizetype pos = 0; pos < 2 * 78 + 4; ++pos) {
        for (int b = 0; b < 256; ++b) {
            QByteArray text = clean;
            text[pos] = char(b);
            const QByteArray expected = referenceDecode(text);
            const auto got = onBothPaths([&] { return clsBase64::decode(QByteArrayView(text)); });
            ASSERT_EQ(got.first, expected) << "byte " << b << " at " << pos;
            ASSERT_EQ(got.second, expected) << "byte " << b << " at " << pos;
        }
    }
}

TEST(Base64Decode, WideUnitsAtEveryPositionCountAsOneZeroCharacter) {
    const QString clean = clsBase64().EncodeByteArray(randomBytes(57 * 3, 13));
    for (qsizetype pos = 0; pos < 2 * 78 + 4; ++pos) {
        for (char16_t u : {u'\u0100', u'\u010A', u'\u0141', u'\u7FFF', u'\u8041', u'\uFFFF'}) {
            QString text = clean;
            text[pos] = QChar(u);
            QByteArray asQuestionMark = clean.toLatin1();
            asQuestionMark[pos] = '?';
            const QByteArray expected = referenceDecode(asQuestionMark);
            const auto got = onBothPaths([&] { return clsBase64::decode(QStringView(text)); });
            ASSERT_EQ(got, std::pair(expected, expected)) << "U+" << unsigned(u) << " at " << pos;
        }
    }
}

TEST(Base64Decode, LinesOfOtherLengthsAndNoBreaks) {
    const QByteArray data = randomBytes(5000, 17);
    const QByteArray plain = data.toBase64();
    QByteArray lines64;
    for (qsizetype i = 0; i < plain.size(); i += 64)
        lines64 += plain.mid(i, 64) + "\r\n";
    for (const QByteArray& text : {plain, lines64, QByteArray(plain).replace("=", "")}) {
        EXPECT_EQ(onBothPaths([&] { return clsBase64::decode(QByteArrayView(text)); }),
                  std::pair(data, data));
    }
}

// Outputs of several megabytes go through the staging buffer and streaming stores: check the
// joins between stages, an output that does not start on a cache line, and stray characters
// that interrupt a run of clean lines.
TEST(Base64Large, StreamedOutputIsExact) {
    const QByteArray data = randomBytes(9 << 20, 23);
    const QByteArray qt = data.toBase64();
    const auto wide = onBothPaths([&] { return clsBase64().EncodeByteArray(data); });
    ASSERT_EQ(wide.first, wide.second);
    ASSERT_EQ(wide.first.toLatin1().replace("\r\n", ""), qt);
    qsizetype calls = 0;
    EXPECT_EQ(clsBase64([&](float) { ++calls; }).EncodeByteArray(data), wide.second);
    EXPECT_EQ(calls, wide.second.count(u'\n'));
    QByteArray ascii = wide.first.toLatin1();
    for (qsizetype offset : {1, 63}) {
        const auto shifted = onBothPaths([&] {
            QByteArray out(ascii.size() + offset, '#');
            clsBase64::encode(reinterpret_cast<const uchar*>(data.data()), data.size(),
                              out.data() + offset);
            return out.sliced(offset);
        });
        ASSERT_EQ(shifted, std::pair(ascii, ascii)) << offset;
    }
    EXPECT_EQ(onBothPaths([&] { return clsBase64::decode(QStringView(wide.first)); }),
              std::pair(data, data));
    QString dirty = wide.first;
    for (qsizetype line : {1000, 1001, 50000, 100000}) {
        dirty[line * 78 + 5] = u' ';
        dirty[line * 78 + 40] = u'=';
    }
    dirty[120000 * 78 + 76] = u'\n'; // a line's CR LF becomes two lone LFs, both 0
    const QByteArray expected = referenceDecode(dirty.toLatin1());
    EXPECT_EQ(onBothPaths([&] { return clsBase64::decode(QStringView(dirty)); }),
              std::pair(expected, expected));
    const QByteArray dirtyAscii = dirty.toLatin1();
    EXPECT_EQ(onBothPaths([&] { return clsBase64::decode(QByteArrayView(dirtyAscii)); }),
              std::pair(expected, expected));
}

// ---- Files ----

class Base64Files : public testing::Test {
protected:
    QTemporaryDir dir;
    QString path(const char* name) const { return dir.filePath(QString::fromLatin1(name)); }
};

TEST_F(Base64Files, EncodeFileRoundTripsThroughConvertiInFile) {
    const QByteArray data = randomBytes(200000, 19);
    writeBytes(path("in.bin"), data);
    const auto text = clsBase64().ConvertiInBase64(path("in.bin"));
    ASSERT_TRUE(text.has_value());
    ASSERT_TRUE(clsBase64::ConvertiInFile(*text, path("out.bin")).ok());
    EXPECT_EQ(readBytes(path("out.bin")), data);
}

// A file is decoded and written block by block. Whatever a hand edit or an older writer left
// somewhere in the text, the file holds exactly what decoding the whole text at once gives.
struct BlockCase {
    const char* name;
    qsizetype at; // where the text is changed, in characters
    QString insert;
    qsizetype remove;
};

void PrintTo(const BlockCase& c, std::ostream* os) {
    *os << c.name;
}

class ConvertiInFileBlocks : public testing::TestWithParam<BlockCase> {};

TEST_P(ConvertiInFileBlocks, SameBytesAsDecodingAtOnce) {
    const BlockCase& c = GetParam();
    // About five blocks of lines and a short last line.
    QString text = clsBase64().EncodeByteArray(randomBytes(57 * 4096 * 5 + 40, 23));
    text.replace(c.at, c.remove, c.insert);
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("out.bin"));
    const clsBase64::WriteResult w = clsBase64::ConvertiInFile(text, file);
    ASSERT_TRUE(w.ok()) << w.error.toStdString();
    const QByteArray expected = clsBase64::DecodeToByteArray(text);
    EXPECT_EQ(w.bytes, expected.size());
    EXPECT_EQ(readBytes(file), expected);
}

constexpr qsizetype kBlock = 4096 * 78; // characters of one block of broken lines

INSTANTIATE_TEST_SUITE_P(
    Base64Files, ConvertiInFileBlocks,
    testing::Values(BlockCase{"unchanged", 0, {}, 0},
                    BlockCase{"equals_in_second_block", kBlock + 100, u"="_s, 0},
                    BlockCase{"lone_cr_in_third_block", 2 * kBlock + 5, u"\r"_s, 0},
                    BlockCase{"pair_moved_across_a_block_end", kBlock - 3, u"\r\n"_s, 0},
                    BlockCase{"break_missing_at_a_block_end", kBlock - 2, {}, 2},
                    BlockCase{"one_character_short_in_first_block", 10, {}, 1},
                    BlockCase{"blank_line_between_blocks", 3 * kBlock, u"\r\n"_s, 0},
                    BlockCase{"break_before_the_first_line", 0, u"\r\n"_s, 0},
                    BlockCase{"bracket_in_a_line", kBlock + 200, u"["_s, 1}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(Base64Files, ConvertiInFileOverwritesWithoutShortening) {
    writeBytes(path("same.bin"), "0123456789ABCDEFGHIJ");
    ASSERT_TRUE(clsBase64::ConvertiInFile(u"aGVsbG8=", path("same.bin")).ok());
    EXPECT_EQ(readBytes(path("same.bin")), QByteArray("hello56789ABCDEFGHIJ"));
}

// A reader that guessed where a text ends has the write declined, not failed, when the file
// is already there or a "[" shows the guess wrong.
TEST_F(Base64Files, ChecksDeclineExistingFilesAndBrackets) {
    writeBytes(path("same.bin"), "0123456789");
    const auto existing =
        clsBase64::ConvertiInFile(u"aGVsbG8=", path("same.bin"), {.newFileOnly = true});
    EXPECT_EQ(existing.declined, clsBase64::Declined::FileExists);
    EXPECT_TRUE(existing.error.isEmpty());
    EXPECT_EQ(readBytes(path("same.bin")), QByteArray("0123456789"));

    QString text = u"\r\n"_s + clsBase64().EncodeByteArray(randomBytes(57 * 10, 5));
    text[2 + 78 * 6 + 30] = u'[';
    const auto bracket = clsBase64::ConvertiInFile(text, path("b.bin"), {.noBracket = true});
    EXPECT_EQ(bracket.declined, clsBase64::Declined::Bracket);
    EXPECT_FALSE(bracket.ok());
    EXPECT_LE(readBytes(path("b.bin")).size(), 57 * 6);
    // Unchecked, the same text decodes with the "[" as any character outside the alphabet.
    const auto plain = clsBase64::ConvertiInFile(text, path("b.bin"));
    ASSERT_TRUE(plain.ok());
    EXPECT_EQ(readBytes(path("b.bin")), clsBase64::DecodeToByteArray(text));
}

TEST_F(Base64Files, UnreadableAndUnwritablePathsReportErrors) {
    QString error;
    EXPECT_FALSE(clsBase64().EncodeFile(path("missing.bin"), &error).has_value());
    EXPECT_TRUE(error.contains(QStringLiteral("missing.bin")));
    EXPECT_FALSE(clsBase64().EncodeFile(dir.path()).has_value());

    EXPECT_FALSE(clsBase64::ConvertiInFile(u"aGVsbG8=", dir.path()).ok());
    EXPECT_FALSE(clsBase64::ConvertiInFile(u"aGVsbG8=", path("no/such/folder.bin")).ok());
    writeBytes(path("target.bin"), "untouched");
    ASSERT_TRUE(QFile::link(path("target.bin"), path("link.bin")));
    const auto viaLink = clsBase64::ConvertiInFile(u"aGVsbG8=", path("link.bin"));
    EXPECT_FALSE(viaLink.ok());
    EXPECT_FALSE(viaLink.error.isEmpty());
    EXPECT_EQ(readBytes(path("target.bin")), QByteArray("untouched"));
}

} // namespace
