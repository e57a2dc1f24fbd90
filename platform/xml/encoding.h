#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// The encodings that documents are read and written in. Inside, every document is UTF-8.
///
/// Each decoder takes exactly the byte sequences that its encoder makes (a byte order mark is carried along
/// as U+FEFF), so what is decoded and encoded again is the same bytes.
namespace xml {

enum class Encoding { utf8, utf16LittleEndian, utf16BigEndian, ascii, latin1, windows1252 };

/// The encoding as messages name it ("UTF-8").
const char* encodingName(Encoding encoding);

/// What the first bytes of a document say.
struct Mark {
    Encoding encoding = Encoding::utf8;
    bool hasByteOrderMark = false;
    const char* fault = nullptr;  ///< A sentence when the bytes are those of an encoding that is not read.
};
Mark readMark(std::string_view bytes);

/// The encoding of the name in a declaration, in any case; none when it is not one that is read. The
/// encodings of 16 bits without a byte order in their name answer that of `marked` when it has one.
std::optional<Encoding> encodingNamed(std::string_view name, Encoding marked);

/// Turns `bytes` into UTF-8. Where they break the encoding, `fault` says why and `text` is what came before.
struct Decoded {
    std::string text;
    std::string fault;
};
Decoded decodeBytes(std::string_view bytes, Encoding encoding);

/// True when `encoding` can hold `character`.
bool canEncode(Encoding encoding, char32_t character);
/// True when `encoding` can hold all of `text`, which is valid UTF-8.
bool canEncode(Encoding encoding, std::string_view text);

/// Appends the UTF-8 `text`, all of which `encoding` can hold, to `bytes`.
void encodeText(std::string& bytes, std::string_view text, Encoding encoding);

}  // namespace xml
