/// The readable text form: keys, values and nested blocks as people write them.

#ifndef TESSARIN_DOCUMENTS_READABLE_LOAD_H
#define TESSARIN_DOCUMENTS_READABLE_LOAD_H

#include <cstdint>

namespace Tessarin {

class Table;

/// Fills a table from a text, which is scratch space to it.
/// text  `size` bytes and two NULs behind them
/// returns  false if a key has no value, a quote is open, a block's key has a value already, or memory ran out for a
///          block; the table then holds what was read so far and is fit only to be destroyed
bool ReadReadable(Table& root, char* text, std::uint32_t size);

} // namespace Tessarin

#endif
