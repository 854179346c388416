#include "core/message/clsBase64.h"

#include <QFile>
#include <QtEndian>
#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
#define QUILLORA_BASE64_AVX2 1
#include <immintrin.h>
#else
#define QUILLORA_BASE64_AVX2 0
#endif
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace quillora {

namespace {

static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN,
              "the tables hold characters and bytes in little-endian word order");

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr qsizetype kLineChars = clsBase64::kLineChars;
constexpr qsizetype kLineBytes = clsBase64::kLineBytes;
constexpr qsizetype kBrokenLineChars = kLineChars + 2;
// The fast decoders store whole words and vectors past the decoded bytes (see decodeCapacity).
constexpr qsizetype kDecodeSlack = 32;

// Outputs this large go through a Stager with streaming stores. Smaller ones stay in the
// caches for whoever reads them next.
constexpr qsizetype kStreamBytes = qsizetype(8) << 20;
// Small stages keep the streaming stores going while the next lines are computed; 8 lines
// measured best against 2 to 128.
constexpr qsizetype kStageLines = 8;

// Two characters for every 12 input bits: half the lookups of a 6-bit table, and the
// results are already in the byte order of a little-endian store. ascii is split into the
// low and high half of a 32-bit word so two lookups combine with one OR.
struct EncodeTables {
    quint32 asciiLo[4096];
    quint32 asciiHi[4096];
    quint32 utf16[4096];
};

constexpr EncodeTables makeEncodeTables() {
    EncodeTables t{};
    for (unsigned v = 0; v < 4096; ++v) {
        const unsigned first = static_cast<unsigned char>(kAlphabet[v >> 6]);
        const unsigned second = static_cast<unsigned char>(kAlphabet[v & 63]);
        t.asciiLo[v] = first | second << 8;
        t.asciiHi[v] = t.asciiLo[v] << 16;
        t.utf16[v] = first | second << 16;
    }
    return t;
}

constexpr EncodeTables kEnc = makeEncodeTables();

// The slow path's table: a character outside the alphabet is simply 0.
struct ValueTable {
    quint8 value[256];
};

constexpr ValueTable makeValueTable() {
    ValueTable t{};
    for (unsigned v = 0; v < 64; ++v)
        t.value[static_cast<unsigned char>(kAlphabet[v])] = static_cast<quint8>(v);
    return t;
}

constexpr ValueTable kDec = makeValueTable();

// The fast path's table: two characters at once, indexed by the 16-bit word they form in
// memory, giving their 12 bits, or kPairBad when either needs the slow path. 128 KiB, of which
// clean text touches about 12 KiB.
constexpr quint16 kPairBad = 0x8000;

const quint16* pairTable() {
    static const std::array<quint16, 65536> table = [] {
        std::array<quint16, 65536> t;
        t.fill(kPairBad);
        for (unsigned a = 0; a < 64; ++a) {
            for (unsigned b = 0; b < 64; ++b) {
                const unsigned first = static_cast<unsigned char>(kAlphabet[a]);
                const unsigned second = static_cast<unsigned char>(kAlphabet[b]);
                t[first | second << 8] = static_cast<quint16>(a << 6 | b);
            }
        }
        return t;
    }();
    return table.data();
}

std::atomic<bool> g_forcePortable{false};

bool cpuHasAvx2() {
#if QUILLORA_BASE64_AVX2
    static const bool has = [] {
        __builtin_cpu_init();
        return __builtin_cpu_supports("avx2") != 0;
    }();
    return has;
#else
    return false;
#endif
}

bool useAvx2() {
    return !g_forcePortable.load(std::memory_order_relaxed) && cpuHasAvx2();
}

qsizetype lineBreaks(qsizetype n) {
    return n > 0 ? ((n + 2) / 3 * 4 - 1) / kLineChars : 0;
}

// Qt's qbswap does not always compile to the single instruction; these are on the hot paths.
inline quint32 byteSwap(quint32 v) {
#if defined(__GNUC__)
    return __builtin_bswap32(v);
#else
    return qbswap(v);
#endif
}
inline quint64 byteSwap(quint64 v) {
#if defined(__GNUC__)
    return __builtin_bswap64(v);
#else
    return qbswap(v);
#endif
}

inline quint32 load32(const void* p) {
    quint32 v;
    std::memcpy(&v, p, sizeof v);
    return v;
}
inline quint64 load64(const void* p) {
    quint64 v;
    std::memcpy(&v, p, sizeof v);
    return v;
}
inline void store32(void* p, quint32 v) {
    std::memcpy(p, &v, sizeof v);
}
inline void store64(void* p, quint64 v) {
    std::memcpy(p, &v, sizeof v);
}

template <class Ch> inline void putBreak(Ch* out) {
    out[0] = Ch('\r');
    out[1] = Ch('\n');
}

// Collects a large output a few lines at a time in a buffer that stays in the L1 cache and
// writes it on with streaming stores, which skip reading every destination line from memory
// before overwriting it: on data larger than the caches that read is a third of the traffic.
// They are only fast on whole, aligned cache lines, so the partial lines at the two ends get
// ordinary stores and the tail of a stage waits for the next one. The streaming stores are
// SSE2, which every x86-64 processor has; elsewhere this is a plain copy.
class Stager {
public:
    explicit Stager(uchar* dst) : m_pos(dst) {}
    Stager(const Stager&) = delete;
    Stager& operator=(const Stager&) = delete;

    // Room for kStageLines encoded UTF-16 lines, plus the decoders' slack.
    uchar* space() { return m_buf + m_fill; }
    void commit(qsizetype bytes) {
        m_fill += size_t(bytes);
        flush(false);
    }
    // Writes what is left; returns the end of the output.
    uchar* finish() {
        flush(true);
#if defined(__SSE2__)
        _mm_sfence(); // streaming stores are weakly ordered; publish them before handing on
#endif
        return m_pos;
    }

private:
    void flush(bool all) {
        const uchar* b = m_buf;
        size_t fill = m_fill;
        if (const size_t lead = size_t(-reinterpret_cast<quintptr>(m_pos)) & 63; lead != 0) {
            const size_t n = std::min(lead, fill);
            std::memcpy(m_pos, b, n);
            m_pos += n;
            b += n;
            fill -= n;
        }
#if defined(__SSE2__)
        for (; fill >= 64; fill -= 64, b += 64, m_pos += 64) {
            const auto* src = reinterpret_cast<const __m128i*>(b);
            auto* dst = reinterpret_cast<__m128i*>(m_pos);
            const __m128i w0 = _mm_loadu_si128(src), w1 = _mm_loadu_si128(src + 1);
            const __m128i w2 = _mm_loadu_si128(src + 2), w3 = _mm_loadu_si128(src + 3);
            _mm_stream_si128(dst, w0);
            _mm_stream_si128(dst + 1, w1);
            _mm_stream_si128(dst + 2, w2);
            _mm_stream_si128(dst + 3, w3);
        }
#endif
        if (all) {
            std::memcpy(m_pos, b, fill);
            m_pos += fill;
            fill = 0;
        }
        std::memmove(m_buf, b, fill);
        m_fill = fill;
    }

    uchar* m_pos;
    size_t m_fill = 0;
    alignas(64) uchar m_buf[64 + kStageLines * kBrokenLineChars * 2 + 2 * kDecodeSlack + 64];
};

// Input is read this far ahead: on large data the hardware prefetcher alone leaves the
// decoders and encoders waiting for memory.
inline void prefetchAhead(const void* p) {
#if defined(__GNUC__)
    __builtin_prefetch(static_cast<const char*>(p) + 4096);
#else
    Q_UNUSED(p);
#endif
}

// ---- Portable encoder ----

// Four characters for the 24 bits in v.
template <class Ch> inline void putGroup(Ch* out, quint32 v) {
    if constexpr (sizeof(Ch) == 1) {
        store32(out, kEnc.asciiLo[v >> 12] | kEnc.asciiHi[v & 0xFFF]);
    } else {
        store64(out, kEnc.utf16[v >> 12] | quint64(kEnc.utf16[v & 0xFFF]) << 32);
    }
}

// Eight characters for the 48 bits at the top of w.
template <class Ch> inline void putTwoGroups(Ch* out, quint64 w) {
    const unsigned a = unsigned(w >> 52), b = unsigned(w >> 40) & 0xFFF;
    const unsigned c = unsigned(w >> 28) & 0xFFF, d = unsigned(w >> 16) & 0xFFF;
    if constexpr (sizeof(Ch) == 1) {
        store32(out, kEnc.asciiLo[a] | kEnc.asciiHi[b]);
        store32(out + 4, kEnc.asciiLo[c] | kEnc.asciiHi[d]);
    } else {
        store64(out, kEnc.utf16[a] | quint64(kEnc.utf16[b]) << 32);
        store64(out + 4, kEnc.utf16[c] | quint64(kEnc.utf16[d]) << 32);
    }
}

inline quint32 load24(const uchar* in) {
    return quint32(in[0]) << 16 | quint32(in[1]) << 8 | in[2];
}

// One full line: 57 bytes to 76 characters. The 8-byte loads end at byte 56, inside the line.
template <class Ch> inline void encodeLinePortable(const uchar* in, Ch* out) {
    for (int k = 0; k < 9; ++k)
        putTwoGroups(out + 8 * k, qFromBigEndian<quint64>(in + 6 * k));
    putGroup(out + 72, load24(in + 54));
}

// `lines` full lines, each followed by CR LF. `available` (input bytes readable from in) is
// for the vector version, which reads past a line.
template <class Ch>
void encodeLinesPortable(const uchar* in, qsizetype /*available*/, qsizetype lines, Ch* out) {
    for (; lines > 0; --lines, in += kLineBytes, out += kBrokenLineChars) {
        prefetchAhead(in);
        encodeLinePortable(in, out);
        putBreak(out + kLineChars);
    }
}

// The last line, padded.
template <class Ch> void encodeTail(const uchar* in, qsizetype n, Ch* out) {
    for (; n >= 3; n -= 3, in += 3, out += 4)
        putGroup(out, load24(in));
    if (n == 0)
        return;
    const quint32 v = quint32(in[0]) << 16 | (n == 2 ? quint32(in[1]) << 8 : 0);
    out[0] = Ch(kAlphabet[v >> 18]);
    out[1] = Ch(kAlphabet[(v >> 12) & 63]);
    out[2] = n == 2 ? Ch(kAlphabet[(v >> 6) & 63]) : Ch('=');
    out[3] = Ch('=');
}

// Every line but the last gets a break; Lines does them, directly or through the stage.
template <class Ch, auto Lines>
void encodeWith(const uchar* in, qsizetype n, Ch* out, bool stream) {
    qsizetype lines = n > 0 ? (n - 1) / kLineBytes : 0;
    if (!stream) {
        Lines(in, n, lines, out);
        in += lines * kLineBytes;
        n -= lines * kLineBytes;
        out += lines * kBrokenLineChars;
    } else {
        Stager stage(reinterpret_cast<uchar*>(out));
        while (lines > 0) {
            const qsizetype chunk = std::min(lines, kStageLines);
            Lines(in, n, chunk, reinterpret_cast<Ch*>(stage.space()));
            stage.commit(chunk * kBrokenLineChars * qsizetype(sizeof(Ch)));
            in += chunk * kLineBytes;
            n -= chunk * kLineBytes;
            lines -= chunk;
        }
        out = reinterpret_cast<Ch*>(stage.finish());
    }
    encodeTail(in, n, out);
}

// ---- Portable decoder ----

// The pair-table index of two characters: the 16-bit word they form, UTF-16 units narrowed to
// their low byte. `wide` collects the units' high bytes, which must all be zero for the fast
// path (kWideMask).
constexpr quint32 kWideMask = 0xFF00FF00;

inline unsigned pairIndex(const char* s, quint32& /*wide*/) {
    quint16 v;
    std::memcpy(&v, s, sizeof v);
    return v;
}

inline unsigned pairIndex(const char16_t* s, quint32& wide) {
    const quint32 x = load32(s);
    wide |= x;
    return (x | x >> 8) & 0xFFFF;
}

// One group of four alphabet characters to 3 bytes (4 stored); false when it is not clean.
template <class Ch> inline bool decodeGroup(const Ch* s, uchar* out, const quint16* pairs) {
    quint32 wide = 0;
    const quint32 hi = pairs[pairIndex(s, wide)];
    const quint32 lo = pairs[pairIndex(s + 2, wide)];
    if (((hi | lo) & kPairBad) || (wide & kWideMask))
        return false;
    store32(out, byteSwap(hi << 20 | lo << 8));
    return true;
}

// Eight characters to 6 bytes (8 stored); false when they are not all clean.
template <class Ch> inline bool decodeEight(const Ch* s, uchar* out, const quint16* pairs) {
    quint32 wide = 0;
    unsigned ia, ib, ic, id;
    if constexpr (sizeof(Ch) == 1) {
        ia = pairIndex(s, wide);
        ib = pairIndex(s + 2, wide);
        ic = pairIndex(s + 4, wide);
        id = pairIndex(s + 6, wide);
    } else {
        // Four units per load; with their high bytes zero, x | x >> 8 puts units 0 and 1 side
        // by side in the low word and units 2 and 3 in the third.
        const quint64 x = load64(s), y = load64(s + 4);
        if ((x | y) & 0xFF00FF00FF00FF00ULL)
            return false;
        const quint64 px = x | x >> 8, py = y | y >> 8;
        ia = unsigned(px) & 0xFFFF;
        ib = unsigned(px >> 32) & 0xFFFF;
        ic = unsigned(py) & 0xFFFF;
        id = unsigned(py >> 32) & 0xFFFF;
    }
    const quint64 a = pairs[ia], b = pairs[ib], c = pairs[ic], d = pairs[id];
    store64(out, byteSwap(a << 52 | b << 40 | c << 28 | d << 16));
    // Checked step by step rather than collected over the line: GCC turns a collected flag
    // into vector code that spills every table value to the stack.
    return !((a | b | c | d) & kPairBad);
}

// step(0) && step(1) && ...: left as a loop, a body this size is not unrolled by the compilers.
template <class Step, int... k> inline bool allSteps(Step step, std::integer_sequence<int, k...>) {
    return (step(k) && ...);
}

// Clean lines: 76 alphabet characters and CR LF, to 57 bytes each (58 stored). Returns how
// many of the next maxLines lines were clean.
template <class Ch>
qsizetype decodeLinesPortable(const Ch* s, qsizetype n, qsizetype maxLines, uchar* out) {
    const quint16* pairs = pairTable();
    qsizetype lines = 0;
    for (; lines < maxLines && n >= kBrokenLineChars && s[kLineChars] == Ch('\r') &&
           s[kLineChars + 1] == Ch('\n');
         ++lines, s += kBrokenLineChars, n -= kBrokenLineChars, out += kLineBytes) {
        prefetchAhead(s);
        const bool clean =
            allSteps([&](int k) { return decodeEight(s + 8 * k, out + 6 * k, pairs); },
                     std::make_integer_sequence<int, 9>());
        if (!clean || !decodeGroup(s + 72, out + 54, pairs))
            break;
    }
    return lines;
}

// Clean groups of four, outside any line structure.
template <class Ch>
void decodeGroupsPortable(const Ch* s, qsizetype n, qsizetype& pos, uchar*& outPos) {
    const quint16* pairs = pairTable();
    qsizetype i = pos;
    uchar* o = outPos;
    for (; n - i >= 4 && decodeGroup(s + i, o, pairs); i += 4, o += 3) {
    }
    pos = i;
    outPos = o;
}

inline bool isHighSurrogate(char16_t c) {
    return c >= 0xD800 && c < 0xDC00;
}
inline bool isLowSurrogate(char16_t c) {
    return c >= 0xDC00 && c < 0xE000;
}

// The exact decoder, one character at a time, handing every group boundary to the fast paths
// for the stretches they can take: decoding clean groups in place is exactly what the rules
// do with them, since only "=" and CR LF pairs move characters between groups.
template <class Ch, auto Lines, auto Groups>
qsizetype decodeWith(const Ch* s, qsizetype n, uchar* out) {
    const bool stream = n / 4 * 3 >= kStreamBytes;
    uchar* o = out;
    qsizetype i = 0;
    quint32 acc = 0;
    int count = 0;
    while (i < n) {
        if (count == 0) {
            // Only stage what starts like a line: staging ends with a store fence.
            if (stream && n - i >= kBrokenLineChars && s[i + kLineChars] == Ch('\r')) {
                Stager stage(o);
                for (qsizetype lines = kStageLines; lines == kStageLines;) {
                    lines = Lines(s + i, n - i, kStageLines, stage.space());
                    stage.commit(lines * kLineBytes);
                    i += lines * kBrokenLineChars;
                }
                o = stage.finish();
            } else {
                const qsizetype lines = Lines(s + i, n - i, n, o);
                i += lines * kBrokenLineChars;
                o += lines * kLineBytes;
            }
            Groups(s, n, i, o);
            if (i >= n)
                break;
        }
        const Ch c = s[i];
        if (c == Ch('\r') && i + 1 < n && s[i + 1] == Ch('\n')) {
            i += 2;
            continue;
        }
        ++i;
        if (c == Ch('='))
            continue;
        unsigned v = 0; // anything outside the alphabet, "?" for wide characters included
        if constexpr (sizeof(Ch) == 1) {
            v = kDec.value[static_cast<unsigned char>(c)];
        } else if (c < 256) {
            v = kDec.value[c];
        } else if (isHighSurrogate(c) && i < n && isLowSurrogate(s[i])) {
            ++i; // one code point, one "?"
        }
        acc = acc << 6 | v;
        if (++count == 4) {
            o[0] = uchar(acc >> 16);
            o[1] = uchar(acc >> 8);
            o[2] = uchar(acc);
            o += 3;
            acc = 0;
            count = 0;
        }
    }
    if (count == 2) {
        *o++ = uchar(acc >> 4);
    } else if (count == 3) {
        o[0] = uchar(acc >> 10);
        o[1] = uchar(acc >> 2);
        o += 2;
    }
    return o - out;
}

// ---- AVX2 ----
// Chosen at run time, so these functions carry the target attribute instead of the build
// having -mavx2. The vector steps follow the well-known shuffle/multiply formulation of
// Base64 (Mula and Lemire); line structure and stray characters are handled around them.

#if QUILLORA_BASE64_AVX2
#define QUILLORA_AVX2 __attribute__((target("avx2")))

// 24 bytes to 32 characters as ASCII. Reads 28 bytes: two 16-byte loads of 12 bytes each.
QUILLORA_AVX2 inline __m256i encodeBlock(const uchar* in) {
    const __m128i lo = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
    const __m128i hi = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + 12));
    __m256i v = _mm256_inserti128_si256(_mm256_castsi128_si256(lo), hi, 1);
    // Each 3-byte group a b c becomes the 32-bit word b a c b.
    v = _mm256_shuffle_epi8(v, _mm256_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10,
                                                1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10));
    // Move the four 6-bit fields of every word to the low bits of its four bytes.
    const __m256i t0 = _mm256_and_si256(v, _mm256_set1_epi32(0x0FC0FC00));
    const __m256i t1 = _mm256_mulhi_epu16(t0, _mm256_set1_epi32(0x04000040));
    const __m256i t2 = _mm256_and_si256(v, _mm256_set1_epi32(0x003F03F0));
    const __m256i t3 = _mm256_mullo_epi16(t2, _mm256_set1_epi32(0x01000010));
    const __m256i idx = _mm256_or_si256(t1, t3);
    // 0..25 -> 'A', 26..51 -> 'a', 52..61 -> '0', 62 -> '+', 63 -> '/': an offset per range.
    __m256i range = _mm256_subs_epu8(idx, _mm256_set1_epi8(51));
    range = _mm256_sub_epi8(range, _mm256_cmpgt_epi8(idx, _mm256_set1_epi8(25)));
    const __m256i offsets =
        _mm256_setr_epi8(65, 71, -4, -4, -4, -4, -4, -4, -4, -4, -4, -4, -19, -16, 0, 0, 65, 71, -4,
                         -4, -4, -4, -4, -4, -4, -4, -4, -4, -19, -16, 0, 0);
    return _mm256_add_epi8(idx, _mm256_shuffle_epi8(offsets, range));
}

QUILLORA_AVX2 inline void storeChars(char* out, __m256i chars) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), chars);
}

QUILLORA_AVX2 inline void storeChars(char16_t* out, __m256i chars) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out),
                        _mm256_cvtepu8_epi16(_mm256_castsi256_si128(chars)));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + 16),
                        _mm256_cvtepu8_epi16(_mm256_extracti128_si256(chars, 1)));
}

// A line is 57 = 24 + 24 + 9 bytes; the third block starts at byte 33 and overlaps the second,
// which rewrites characters 44..63 with the same values and reads 4 bytes past the line. A line
// without those 4 bytes after it goes the portable way.
template <class Ch>
QUILLORA_AVX2 void encodeLinesAvx2(const uchar* in, qsizetype available, qsizetype lines, Ch* out) {
    for (; lines > 0 && available >= kLineBytes + 4;
         --lines, in += kLineBytes, available -= kLineBytes, out += kBrokenLineChars) {
        prefetchAhead(in);
        storeChars(out, encodeBlock(in));
        storeChars(out + 32, encodeBlock(in + 24));
        storeChars(out + 44, encodeBlock(in + 33));
        putBreak(out + kLineChars);
    }
    encodeLinesPortable(in, available, lines, out);
}

QUILLORA_AVX2 inline __m256i loadChars(const char* s) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s));
}

// Units above 255 saturate to 0xFF (or to 0 from 0x8000 up): both outside the alphabet.
QUILLORA_AVX2 inline __m256i loadChars(const char16_t* s) {
    const __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s));
    const __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + 16));
    return _mm256_permute4x64_epi64(_mm256_packus_epi16(a, b), 0xD8);
}

// 32 characters to 24 bytes, stored as 32 (8 junk). Returns non-zero bytes where a character
// is outside the alphabet; the stored bytes are then meaningless.
template <class Ch> QUILLORA_AVX2 inline __m256i decodeBlock(const Ch* s, uchar* out) {
    const __m256i in = loadChars(s);
    const __m256i nibble = _mm256_set1_epi8(0x0F);
    const __m256i hiNibbles = _mm256_and_si256(_mm256_srli_epi32(in, 4), nibble);
    const __m256i loNibbles = _mm256_and_si256(in, nibble);
    // A character is in the alphabet when its two nibble classes share no bit.
    const __m256i loClass = _mm256_shuffle_epi8(
        _mm256_setr_epi8(0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x13, 0x1A,
                         0x1B, 0x1B, 0x1B, 0x1A, 0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11,
                         0x11, 0x11, 0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A),
        loNibbles);
    const __m256i hiClass = _mm256_shuffle_epi8(
        _mm256_setr_epi8(0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10, 0x10, 0x10,
                         0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08,
                         0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10),
        hiNibbles);
    // Value = character + an offset chosen by the high nibble; '/' shares its nibble with '+'.
    const __m256i isSlash = _mm256_cmpeq_epi8(in, _mm256_set1_epi8('/'));
    const __m256i offset = _mm256_shuffle_epi8(
        _mm256_setr_epi8(0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0, 0, 16, 19, 4,
                         -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0),
        _mm256_add_epi8(isSlash, hiNibbles));
    const __m256i values = _mm256_add_epi8(in, offset);
    // Pack 4 x 6 bits per 32-bit word, then gather the 3 bytes of every word.
    const __m256i pairs = _mm256_maddubs_epi16(values, _mm256_set1_epi32(0x01400140));
    const __m256i words = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
    const __m256i bytes = _mm256_shuffle_epi8(
        words, _mm256_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1, 2, 1, 0, 6,
                                5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1));
    _mm256_storeu_si256(
        reinterpret_cast<__m256i*>(out),
        _mm256_permutevar8x32_epi32(bytes, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7)));
    return _mm256_and_si256(loClass, hiClass);
}

// As decodeLinesPortable. A line is 76 = 32 + 32 + 12 characters; the third block starts at 44
// and overlaps the second.
template <class Ch>
QUILLORA_AVX2 qsizetype decodeLinesAvx2(const Ch* s, qsizetype n, qsizetype maxLines, uchar* out) {
    qsizetype lines = 0;
    for (; lines < maxLines && n >= kBrokenLineChars && s[kLineChars] == Ch('\r') &&
           s[kLineChars + 1] == Ch('\n');
         ++lines, s += kBrokenLineChars, n -= kBrokenLineChars, out += kLineBytes) {
        prefetchAhead(s);
        // In this order: each store's 8 junk bytes are overwritten by the next one.
        const __m256i bad0 = decodeBlock(s, out);
        const __m256i bad1 = decodeBlock(s + 32, out + 24);
        const __m256i bad2 = decodeBlock(s + 44, out + 33);
        const __m256i bad = _mm256_or_si256(_mm256_or_si256(bad0, bad1), bad2);
        if (!_mm256_testz_si256(bad, bad))
            break;
    }
    return lines;
}

// Clean blocks of 32, then clean groups of four. A block with anything unusual in it goes to
// the groups, and what they cannot take to the exact slow path.
template <class Ch>
QUILLORA_AVX2 void decodeGroupsAvx2(const Ch* s, qsizetype n, qsizetype& pos, uchar*& outPos) {
    qsizetype i = pos;
    uchar* o = outPos;
    for (; n - i >= 32; i += 32, o += 24) {
        const __m256i bad = decodeBlock(s + i, o);
        if (!_mm256_testz_si256(bad, bad))
            break;
    }
    const quint16* pairs = pairTable();
    for (; n - i >= 4 && decodeGroup(s + i, o, pairs); i += 4, o += 3) {
    }
    pos = i;
    outPos = o;
}
#endif

template <class Ch> bool streamEncoded(qsizetype n) {
    return clsBase64::encodedLength(n) * qsizetype(sizeof(Ch)) >= kStreamBytes;
}

// stream: whether the whole output is large, when this is one piece of it.
template <class Ch> void encodeAny(const uchar* in, qsizetype n, Ch* out, bool stream) {
#if QUILLORA_BASE64_AVX2
    if (useAvx2()) {
        encodeWith<Ch, encodeLinesAvx2<Ch>>(in, n, out, stream);
        return;
    }
#endif
    encodeWith<Ch, encodeLinesPortable<Ch>>(in, n, out, stream);
}

template <class Ch> qsizetype decodeAny(const Ch* in, qsizetype n, uchar* out) {
#if QUILLORA_BASE64_AVX2
    if (useAvx2())
        return decodeWith<Ch, decodeLinesAvx2<Ch>, decodeGroupsAvx2<Ch>>(in, n, out);
#endif
    return decodeWith<Ch, decodeLinesPortable<Ch>, decodeGroupsPortable<Ch>>(in, n, out);
}

// Windows-1252 in 0x80..0x9F; the five unassigned bytes stand for the C1 control of the same
// value, as the system code page's converter does (and as TextFile reads them).
constexpr char16_t kCp1252High[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

char toCp1252(char16_t c) {
    if (c < 0x80 || (c >= 0xA0 && c < 0x100))
        return char(c);
    for (int k = 0; k < 32; ++k) {
        if (kCp1252High[k] == c)
            return char(0x80 + k);
    }
    return '?';
}

QByteArray encodeCp1252(QStringView text) {
    QByteArray out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        if (isHighSurrogate(c) && i + 1 < text.size() && isLowSurrogate(text[i + 1].unicode())) {
            out.append('?');
            ++i;
        } else {
            out.append(toCp1252(c));
        }
    }
    return out;
}

QString decodeCp1252(QByteArrayView bytes) {
    QString out(bytes.size(), Qt::Uninitialized);
    auto* dst = reinterpret_cast<char16_t*>(out.data());
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const auto b = static_cast<unsigned char>(bytes[i]);
        dst[i] = (b >= 0x80 && b < 0xA0) ? kCp1252High[b - 0x80] : char16_t(b);
    }
    return out;
}

} // namespace

qsizetype clsBase64::encodedLength(qsizetype n) {
    return n > 0 ? (n + 2) / 3 * 4 + 2 * lineBreaks(n) : 0;
}

void clsBase64::encode(const uchar* in, qsizetype n, char* out) {
    encodeAny(in, n, out, streamEncoded<char>(n));
}

void clsBase64::encode(const uchar* in, qsizetype n, char16_t* out) {
    encodeAny(in, n, out, streamEncoded<char16_t>(n));
}

qsizetype clsBase64::decodeCapacity(qsizetype n) {
    return n / 4 * 3 + kDecodeSlack;
}

qsizetype clsBase64::decode(const char* in, qsizetype n, uchar* out) {
    return decodeAny(in, n, out);
}

qsizetype clsBase64::decode(const char16_t* in, qsizetype n, uchar* out) {
    return decodeAny(in, n, out);
}

QByteArray clsBase64::decode(QByteArrayView ascii) {
    if (ascii.isEmpty())
        return {};
    QByteArray out(decodeCapacity(ascii.size()), Qt::Uninitialized);
    out.resize(decode(ascii.data(), ascii.size(), reinterpret_cast<uchar*>(out.data())));
    return out;
}

QByteArray clsBase64::decode(QStringView utf16) {
    if (utf16.isEmpty())
        return {};
    QByteArray out(decodeCapacity(utf16.size()), Qt::Uninitialized);
    out.resize(decode(utf16.utf16(), utf16.size(), reinterpret_cast<uchar*>(out.data())));
    return out;
}

bool clsBase64::avx2Supported() {
    return cpuHasAvx2();
}

void clsBase64::setForcePortable(bool force) {
    g_forcePortable.store(force, std::memory_order_relaxed);
}

bool clsBase64::forcePortable() {
    return g_forcePortable.load(std::memory_order_relaxed);
}

QString clsBase64::EncodeByteArray(QByteArrayView bytes) const {
    const auto* in = reinterpret_cast<const uchar*>(bytes.data());
    const qsizetype n = bytes.size();
    QString text(encodedLength(n), Qt::Uninitialized);
    auto* out = reinterpret_cast<char16_t*>(text.data());
    if (!m_progress) {
        encode(in, n, out);
        return text;
    }
    // Whole chunks of lines between notifications keep the call out of the encoding loop.
    const bool stream = streamEncoded<char16_t>(n);
    constexpr qsizetype kChunkLines = 1024;
    constexpr qsizetype kChunkBytes = kChunkLines * kLineBytes;
    qsizetype done = 0;
    for (; n - done > kChunkBytes; done += kChunkBytes) {
        encodeAny(in + done, kChunkBytes, out, stream);
        out += kChunkLines * kBrokenLineChars - 2;
        putBreak(out);
        out += 2;
        for (qsizetype k = 0; k < kChunkLines; ++k)
            m_progress(kProgressStep);
    }
    encodeAny(in + done, n - done, out, stream);
    for (qsizetype k = lineBreaks(n - done); k > 0; --k)
        m_progress(kProgressStep);
    return text;
}

QString clsBase64::EncodeString(QStringView text) const {
    return EncodeByteArray(encodeCp1252(text));
}

std::optional<QString> clsBase64::EncodeFile(const QString& path, QString* error) const {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = QStringLiteral("Cannot open %1: %2").arg(path, file.errorString());
        return std::nullopt;
    }
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        if (error)
            *error = QStringLiteral("Cannot read %1: %2").arg(path, file.errorString());
        return std::nullopt;
    }
    return EncodeByteArray(bytes);
}

std::optional<QString> clsBase64::ConvertiInBase64(const QString& path, QString* error) const {
    return EncodeFile(path, error);
}

QByteArray clsBase64::DecodeToByteArray(QStringView text) {
    return decode(text);
}

QString clsBase64::DecodeToString(QStringView text) {
    return decodeCp1252(decode(text));
}

namespace {

// Lines decoded and written per step: the decoded bytes are still in the cache when the
// kernel copies them into the file, and memory stays small whatever the file's size.
constexpr qsizetype kFileStepLines = 4096;

// Whole clean lines from `in`, decoded into out: how many there were, up to maxLines.
qsizetype decodeCleanLines(const char16_t* in, qsizetype n, qsizetype maxLines, uchar* out) {
#if QUILLORA_BASE64_AVX2
    if (useAvx2())
        return decodeLinesAvx2(in, n, maxLines, out);
#endif
    return decodeLinesPortable(in, n, maxLines, out);
}

// Whether the lines from `in` are whole lines as the encoder writes them: 76 characters with
// no CR, LF or "=" among them, each followed by CR LF. Decoding such a block on its own gives
// the same bytes as decoding it inside the whole text, because it holds whole groups and no
// pair or padding straddles its ends.
bool plainLines(const char16_t* in, qsizetype lines) {
    char16_t odd = 0;
    for (qsizetype l = 0; l < lines; ++l, in += kBrokenLineChars) {
        for (qsizetype i = 0; i < kLineChars; ++i) {
            const char16_t c = in[i];
            odd |= char16_t((c == u'\r') | (c == u'\n') | (c == u'='));
        }
        odd |= char16_t((in[kLineChars] != u'\r') | (in[kLineChars + 1] != u'\n'));
    }
    return odd == 0;
}

bool writeAll(int fd, const uchar* p, qsizetype left, int& error) {
    while (left > 0) {
        const ssize_t written = ::write(fd, p, size_t(left));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0) {
            error = written < 0 ? errno : ENOSPC;
            return false;
        }
        p += written;
        left -= written;
    }
    return true;
}

} // namespace

clsBase64::WriteResult clsBase64::ConvertiInFile(QStringView text, const QString& path) {
    return ConvertiInFile(text, path, WriteChecks());
}

clsBase64::WriteResult clsBase64::ConvertiInFile(QStringView text, const QString& path,
                                                 WriteChecks checks) {
    const QByteArray name = QFile::encodeName(path);
    if (name.isEmpty())
        return {QStringLiteral("Cannot write a file without a name")};
    // No O_TRUNC: bytes past the new length stay. O_NOFOLLOW: a link planted at the path is
    // not followed elsewhere. O_NONBLOCK: a FIFO fails here instead of waiting for a reader.
    const int fd = ::open(name.constData(),
                          O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC |
                              (checks.newFileOnly ? O_EXCL : 0),
                          0666);
    if (fd < 0 && checks.newFileOnly && errno == EEXIST) {
        WriteResult declined;
        declined.declined = Declined::FileExists;
        return declined;
    }
    if (fd < 0)
        return {QStringLiteral("Cannot open %1 for writing: %2").arg(path, qt_error_string(errno))};
    struct stat info {};
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        ::close(fd);
        return {QStringLiteral("Cannot write %1: not a regular file").arg(path)};
    }
    const char16_t* in = text.utf16();
    const qsizetype n = text.size();
    constexpr qsizetype kStepChars = kFileStepLines * kBrokenLineChars;
    QByteArray buffer(decodeCapacity(kStepChars), Qt::Uninitialized);
    qint64 total = 0;
    int error = 0;
    for (qsizetype at = 0; at < n;) {
        // Every step starts on a group boundary, where a CR LF pair (the one after the
        // object's name, a blank line) is dropped as it would be anywhere else.
        if (n - at >= 2 && in[at] == u'\r' && in[at + 1] == u'\n') {
            at += 2;
            continue;
        }
        // A block of clean lines, decoded in the one pass that checks them. Else a block of
        // plain lines, or everything left in one piece, under the full rules.
        auto* out = reinterpret_cast<uchar*>(buffer.data());
        const qsizetype lines = decodeCleanLines(in + at, n - at, kFileStepLines, out);
        qsizetype take = lines * kBrokenLineChars;
        qsizetype produced = lines * kLineBytes;
        if (lines == 0) {
            take = n - at > kStepChars && plainLines(in + at, kFileStepLines) ? kStepChars : n - at;
            if (checks.noBracket && QStringView(in + at, take).contains(u'[')) {
                ::close(fd);
                WriteResult declined;
                declined.bytes = total;
                declined.declined = Declined::Bracket;
                return declined;
            }
            if (buffer.size() < decodeCapacity(take))
                buffer.resize(decodeCapacity(take));
            out = reinterpret_cast<uchar*>(buffer.data());
            produced = decode(in + at, take, out);
        }
        if (!writeAll(fd, out, produced, error)) {
            ::close(fd);
            return {QStringLiteral("Cannot write %1: %2").arg(path, qt_error_string(error))};
        }
        total += produced;
        at += take;
    }
    if (::close(fd) != 0)
        return {QStringLiteral("Cannot write %1: %2").arg(path, qt_error_string(errno))};
    return {QString(), total};
}

} // namespace quillora
