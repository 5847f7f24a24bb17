// Any bytes as a recordset in XML.
#include "saved_recordset.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tk::fuzz::TryToRead(data, size, tk::ado::ReadXml);
    return 0;
}
