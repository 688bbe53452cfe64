// Any bytes as a JSON document. The table holds what RapidJSON's own documents find in the text by the form's rules; no
// text fails, and the table's save says the same again.

#include "fuzz/check.h"
#include "fuzz/json_oracle.h"
#include "tessarin/documents.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Fuzz::TableHolder table(OpenTableBuffer(data, static_cast<std::uint32_t>(size)));
    Fuzz::Require((table == nullptr) == (size == 0), "only an empty buffer is rejected");
    if (table == nullptr) return 0;
    const Fuzz::Value expected = Fuzz::TreeOfRawJson({reinterpret_cast<const char*>(data), size});
    Fuzz::Require(Fuzz::TreeOf(*table) == expected, "the table isn't what the text says");
    Fuzz::CheckSave(*table);
    return 0;
}
