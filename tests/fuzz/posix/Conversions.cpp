// UTF-8 and UTF-16, against a model and against the C library's converter, which stops at what is
// broken. The input is taken as both.
#include <Text/Utf8.h>
#include <VelBase/TextConversions.h>
#include <iconv.h>

#include <bit>
#include <cstdlib>
#include <vector>

#include "fuzz/Fuzzing.h"
#include "support/Text.h"
#include "unit/text/ModelCodec.h"

namespace {

using Units = std::vector<unsigned short>;

static_assert(std::endian::native == std::endian::little);

// What could be converted, and whether that was all.
struct Converted {
    std::string bytes;
    bool isWhole;
};

class Converter {
public:
    Converter(const char* to, const char* from) : converter_(::iconv_open(to, from)) {
        if (converter_ == iconv_t(-1)) Fuzz::Fail("iconv_open", from, to);
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;
    ~Converter() { ::iconv_close(converter_); }

    Converted operator()(std::string source) const {
        std::string target(4 * source.size() + 4, '\0');
        char* in = source.data();
        char* out = target.data();
        std::size_t inLeft = source.size();
        std::size_t outLeft = target.size();
        ::iconv(converter_, nullptr, nullptr, nullptr, nullptr);
        ::iconv(converter_, &in, &inLeft, &out, &outLeft);
        target.resize(target.size() - outLeft);
        return {target, inLeft == 0};
    }

private:
    iconv_t converter_;
};

Units UnitsOf(std::string_view bytes) {
    Units units;
    for (std::size_t index = 0; index + 1 < bytes.size(); index += 2)
        units.push_back(
            static_cast<unsigned short>(static_cast<unsigned char>(bytes[index]) |
                                        static_cast<unsigned char>(bytes[index + 1]) << 8));
    return units;
}

std::string BytesOf(const Units& units) {
    return {reinterpret_cast<const char*>(units.data()), 2 * units.size()};
}

Units ModelUtf16(std::string_view text) {
    Units units;
    while (!text.empty())
        for (const unsigned short unit : Model::Utf16Of(Model::TakeFromUtf8(text)))
            units.push_back(unit);
    return units;
}

std::string ModelUtf8(const Units& units) {
    std::string text;
    for (std::span<const unsigned short> rest = units; !rest.empty();)
        text += Model::Utf8Of(Model::TakeFromUtf16(rest));
    return text;
}

// Where the C library stops, the library goes on with the character for what is broken.
template <class Text>
void ExpectBeginning(const char* what, const Text& sound, const Text& replacement, bool isWhole,
                     const Text& actual) {
    Text expected = sound;
    if (!isWhole) expected.insert(expected.end(), replacement.begin(), replacement.end());
    Text beginning = actual;
    if (!isWhole && actual.size() > expected.size()) beginning.resize(expected.size());
    Fuzz::Expect(what, expected, beginning);
}

void CompareDecoding(const std::string& text) {
    static const Converter convert("UTF-16LE", "UTF-8");
    const Units units = Text::Utf16FromUtf8(text);
    Fuzz::Expect("UTF-16 by the model", ModelUtf16(text), units);
    const Converted sound = convert(text);
    ExpectBeginning("UTF-16 by the C library", UnitsOf(sound.bytes), {0xFFFD}, sound.isWhole,
                    units);
    if (sound.isWhole) Fuzz::Expect("back to UTF-8", text, Text::Utf8FromUtf16(units));
}

void CompareEncoding(const Units& units) {
    static const Converter convert("UTF-8", "UTF-16LE");
    const std::string text = Text::Utf8FromUtf16(units);
    Fuzz::Expect("UTF-8 by the model", ModelUtf8(units), text);
    const Converted sound = convert(BytesOf(units));
    ExpectBeginning<std::string>("UTF-8 by the C library", sound.bytes, "\xEF\xBF\xBD",
                                 sound.isWhole, text);
    if (sound.isWhole) Fuzz::Expect("back to UTF-16", units, Text::Utf16FromUtf8(text));
}

// The exported conversions end at the first zero.
void CompareExported(const std::string& text) {
    const std::string seen = Fuzz::CText(text);
    const auto wide = VelBase::UTF8ToWideChar(text.c_str(), false);
    const Units units = ModelUtf16(seen);
    Fuzz::Expect("UTF8ToWideChar", std::u16string(units.begin(), units.end()),
                 Support::Text(wide.c_str()));
    Fuzz::Expect<std::string>("WideCharToUTF8", ModelUtf8(units),
                              VelBase::WideCharToUTF8(wide.c_str(), false).c_str());
}

}  // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string text(Fuzz::Input(data, size).Rest());
    CompareDecoding(text);
    CompareEncoding(UnitsOf(text));
    CompareExported(text);
    return 0;
}
