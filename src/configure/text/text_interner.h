// Interns the keys and values of a parsed text, in groups, as a loader comes to its nodes.

#ifndef TESSARIN_CONFIGURE_TEXT_TEXT_INTERNER_H
#define TESSARIN_CONFIGURE_TEXT_TEXT_INTERNER_H

#include "configure/text/parser.h"
#include "strings/intern_batch.h"
#include "tessarin/types.h"

namespace Configure {

/// What is interned is there when Finish returns true; all functions return false if a text can't be interned. Results
/// and the parsed text must stay until then.
class TextInterner {
public:
    explicit TextInterner(const ParsedText& parsed) : parsed_(parsed) {}

    /// Interns a node's key: in path form if there is a separator in it, else in lower case.
    /// copy     takes the key as well; null for nothing
    [[nodiscard]] bool AddKey(const TextNode& node, cstr* result, cstr* copy);

    /// Interns a scalar's value as it is, up to a NUL in it. One that is absent becomes null.
    [[nodiscard]] bool AddValue(const TextNode& node, cstr* result);

    [[nodiscard]] bool Finish() { return batch_.InternAll(); }

private:
    const ParsedText& parsed_;
    Tessarin::InternBatch batch_{*Tessarin::string_table};
};

} // namespace Configure

#endif
