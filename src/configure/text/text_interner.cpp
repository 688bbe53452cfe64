// A plain key, which is just its bytes in the text, waits for its group, as a value does. A key that had to be put
// together is interned at once, as its bytes don't stay.

#include "configure/text/text_interner.h"

#include "configure/text/key_spelling.h"

#include <cstring>

namespace Configure {
namespace {

cstr InternSpelled(const SpelledKey& key) {
    const char* const bytes = key.Bytes();
    const bool is_path =
        std::memchr(bytes, '\\', key.Length()) != nullptr || std::memchr(bytes, '/', key.Length()) != nullptr;
    return is_path ? Tessarin::string_table->InternPath(bytes) : Tessarin::string_table->InternLowerCase(bytes);
}

} // namespace

bool TextInterner::AddKey(const TextNode& node, cstr* result, cstr* copy) {
    const SpelledKey key(parsed_.Bytes(), parsed_.KeyOf(node), node);
    if (key.IsPlain()) return batch_.Add({key.Bytes(), key.Length(), Tessarin::TextForm::kLowerCase, result, copy});
    *result = InternSpelled(key);
    if (copy != nullptr) *copy = *result;
    return *result != nullptr;
}

bool TextInterner::AddValue(const TextNode& node, cstr* result) {
    if (node.IsAbsent()) {
        *result = nullptr;
        return true;
    }
    const Span value = parsed_.ValueOf(node);
    const char* const text = parsed_.Bytes() + value.first;
    const void* nul = std::memchr(text, '\0', value.Length());
    const std::uint32_t length =
        nul == nullptr ? value.Length() : static_cast<std::uint32_t>(static_cast<const char*>(nul) - text);
    return batch_.Add({text, length, Tessarin::TextForm::kAsIs, result, nullptr});
}

} // namespace Configure
