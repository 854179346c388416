// Decodes arbitrary bytes, as ASCII and as UTF-16 units, on the portable and the automatic
// (AVX2 where present) paths, into buffers of exactly the advertised capacity so a fast path
// storing too far is caught; the two paths must agree. Then encodes the bytes on both paths and
// checks the length formula and that decoding gives them back.
#include "core/message/clsBase64.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

using quillora::clsBase64;

namespace {

void check(bool ok) {
    if (!ok)
        std::abort();
}

template <class Ch> std::vector<uchar> decodeOn(bool portable, const Ch* in, qsizetype n) {
    clsBase64::setForcePortable(portable);
    std::vector<uchar> out(size_t(clsBase64::decodeCapacity(n)));
    const qsizetype len = clsBase64::decode(in, n, out.data());
    check(len >= 0 && len <= n / 4 * 3 + 2);
    out.resize(size_t(len));
    return out;
}

template <class Ch> std::vector<Ch> encodeOn(bool portable, const uchar* in, qsizetype n) {
    clsBase64::setForcePortable(portable);
    std::vector<Ch> out(size_t(clsBase64::encodedLength(n)));
    clsBase64::encode(in, n, out.data());
    return out;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const auto n = qsizetype(size);
    const auto* text = reinterpret_cast<const char*>(data);
    check(decodeOn(true, text, n) == decodeOn(false, text, n));

    std::vector<char16_t> wide(size / 2);
    if (!wide.empty())
        std::memcpy(wide.data(), data, wide.size() * 2);
    const auto wn = qsizetype(wide.size());
    check(decodeOn(true, wide.data(), wn) == decodeOn(false, wide.data(), wn));

    const std::vector<char> ascii = encodeOn<char>(true, data, n);
    check(ascii == encodeOn<char>(false, data, n));
    const qsizetype groups = (n + 2) / 3 * 4;
    const qsizetype expected =
        groups + 2 * (groups / 76) - (groups > 0 && groups % 76 == 0 ? 2 : 0);
    check(qsizetype(ascii.size()) == expected);
    const std::vector<char16_t> utf16 = encodeOn<char16_t>(false, data, n);
    check(std::equal(ascii.begin(), ascii.end(), utf16.begin(), utf16.end(),
                     [](char a, char16_t u) { return char16_t(uchar(a)) == u; }));

    const std::vector<uchar> original(data, data + size);
    for (bool portable : {true, false}) {
        check(decodeOn(portable, ascii.data(), qsizetype(ascii.size())) == original);
        check(decodeOn(portable, utf16.data(), qsizetype(utf16.size())) == original);
    }
    clsBase64::setForcePortable(false);
    return 0;
}
