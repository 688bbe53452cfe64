// Interns the keys and values of a parsed text, in groups, while a loader walks over its nodes.

#ifndef TESSARIN_CONFIGURE_TEXT_TEXT_INTERNER_H
#define TESSARIN_CONFIGURE_TEXT_TEXT_INTERNER_H

#include "configure/text/parser.h"
#include "strings/intern_batch.h"
#include "tessarin/types.h"

namespace Configure {

/// All results are set when Finish returns true; all functions return false if a text can't be interned. The places of
/// the results and the parsed text must exist until then.
class TextInterner {
public:
    explicit TextInterner(const ParsedText& parsed) : parsed_(parsed) {}

    /// Interns a node's key: in path form if it contains a separator, else in lower case.
    /// copy     takes the key as well; may be null
    [[nodiscard]] bool AddKey(const TextNode& node, cstr* result, cstr* copy);

    /// Interns a scalar's value as it is, up to a NUL in it. An absent value becomes null.
    [[nodiscard]] bool AddValue(const TextNode& node, cstr* result);

    [[nodiscard]] bool Finish() { return batch_.InternAll(); }

private:
    const ParsedText& parsed_;
    Tessarin::InternBatch batch_{*Tessarin::string_table};
};

} // namespace Configure

#endif
