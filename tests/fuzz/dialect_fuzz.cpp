// Any script from every dialect into every other: no character is cut apart, lengths stay bounded, and what needs no
// rule comes back in capitals alone.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "tkkernel/driver.h"

namespace {

void Require(bool holds) {
    if (!holds) std::abort();
}

/// The converters, in reach.
class Converters : public CTDatabase {
public:
    CString FromSqlServer(const char* script, const char* target) { return VeriFySQLServerPragramer(script, target); }
    CString FromSybase(const char* script, const char* target) { return VeriFySybasePragramer(script, target); }
    CString FromDb2(const char* script, const char* target) { return VeriFyDB2Pragramer(script, target); }
    CString FromOracle(const char* script, const char* target) { return VeriFyOraclePragramer(script, target); }
};

CString Capitals(CString text) {
    text.MakeUpper();
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using Converter = CString (Converters::*)(const char*, const char*);
    const std::string text(reinterpret_cast<const char*>(data), size);
    const CString script(text.c_str());
    const CString capitals = Capitals(script);
    for (const Converter convert :
         {&Converters::FromSqlServer, &Converters::FromSybase, &Converters::FromDb2, &Converters::FromOracle}) {
        Converters database;
        for (const char* target : {"Mic", "MS ", "ADA", "DB2", "ORA"}) {
            const CString converted = (database.*convert)(script, target);
            // No word of the rules becomes five times as long.
            Require(converted.GetLength() <= 5 * script.GetLength());
            Require(converted == (database.*convert)(capitals, target));
        }
        Require((database.*convert)(script, "ADA") == capitals);
        Require(database.GetLastErrorString().IsEmpty());
        Require((database.*convert)(script, text.c_str()).GetLength() <= 5 * script.GetLength());
        Require((database.*convert)(script, "other") == capitals);
        Require(!database.GetLastErrorString().IsEmpty());
    }
    return 0;
}
