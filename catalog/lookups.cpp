// Single values and whole results of a query, as values and texts.
#include <algorithm>
#include <optional>

#include "catalog/messages.h"
#include "driver/guard.h"
#include "tkkernel/util.h"
#include "util/fault_guard.h"
#include "util/text.h"

using namespace tk::catalog;
using tk::driver::Guard;
using tk::util::OrEmpty;
using tk::util::RunGuarded;

namespace {

constexpr char kCountRows[] = "select count(*) from %s";  // the name may bring a schema or a condition with it
constexpr char kNameSeparator[] = "|";
constexpr long kPageSize = 1000;

/// The value that GetFirstValue lends to its callers, one for each thread.
COleVariant& LentValue() {
    thread_local COleVariant value;
    return value;
}

template <typename Column>
const VARIANT& FirstValue(CTDatabase& database, const char* sql, Column column) {
    COleVariant& lent = LentValue();
    lent.Clear();
    Guard::Do(database, sql, [&] {
        CTRecordset records(&database);
        if (!records.OpenSQL(sql, 1) || records.GetEof()) return;
        VARIANT value = records.GetValue(column);
        lent.Attach(value);
    });
    return lent;
}

/// Lets read(records, text) read what a query shows, unless it shows nothing, for a caller that has to go on whatever
/// happens in it.
/// @return the text; for every kind of exception and fault "", with the fault's text as the last error
template <typename Read>
CString Shielded(CTDatabase& database, const char* sql, const Read& read, const char* fault, CString& lastError) {
    CString text;
    // Outside of what may fault: a fault runs no destructors, and the recordset has a session of its own.
    std::optional<CTRecordset> records;
    const bool done = RunGuarded([&] {
        // There first: a fault in a constructor would leave a session that nobody ends.
        records.emplace();
        records->OpenDatabase(&database);
        if (records->OpenSQL(sql, 1) && !records->GetEof()) read(*records, text);
    });
    RunGuarded([&] { records.reset(); });
    if (done) return text;
    lastError = fault;
    return {};
}

/// Appends the display texts of the current record as a line, with the separator between them. Those at its end go.
void AppendLine(CTRecordset& records, long fields, const CString& separator, CString& text) {
    CString line;
    for (long i = 0; i < fields; ++i) {
        line += records.GetStringValue(i);
        line += separator;
    }
    line.TrimRight(separator);
    text += line;
    // Contract: it is the whole text whose end is cut. Behind an empty line that is the end of the line before it,
    // which goes as well where the separator holds a line feed.
    if (line.IsEmpty() && separator.Find('\n') >= 0) text.TrimRight(separator);
    text += "\r\n";
}

}  // namespace

// ---- values --------------------------------------------------------------------------------------------------------

const VARIANT& CTDatabase::GetFirstValue(const char* szSQL, long nIndex) {
    return FirstValue(*this, szSQL, nIndex);
}

const VARIANT& CTDatabase::GetFirstValue(const char* szSQL, const char* szField) {
    return FirstValue(*this, szSQL, szField);
}

long CTDatabase::GetRecordCount(const char* szTable) {
    CString sql;
    sql.Format(kCountRows, OrEmpty(szTable));
    const VARIANT& count = GetFirstValue(sql, 0L);
    // Contract: a count that comes as a decimal or a real number is not known.
    switch (V_VT(&count)) {
        case VT_I2:
            return V_I2(&count);
        case VT_I4:
            return V_I4(&count);
        default:
            return -1;
    }
}

// ---- texts ---------------------------------------------------------------------------------------------------------

CString CTDatabase::GetSpecialValue(const char* szSQL, const char* szFields) {
    const auto read = [&](CTRecordset& records, CString& text) {
        CStringArray names;
        StringToArray(names, szFields, kNameSeparator);
        // Contract: a single name is not looked at.
        if (names.GetSize() == 1) {
            text = records.GetStringValue(0L);
            return;
        }
        for (int i = 0; i < names.GetSize(); ++i)
            text += records.GetStringValue(names[i]) + kNameSeparator;
        text.TrimRight(kNameSeparator);
    };
    return Shielded(*this, szSQL, read, kGetSpecialValueFault, lastError_);
}

CString CTDatabase::GetRecordValues(const char* szSQL, const char* szSeparator) {
    const auto read = [&](CTRecordset& records, CString& text) {
        const CString separator(szSeparator);
        records.SetPageSize(kPageSize);
        const long pages = records.GetPageCount();
        const long count = records.GetRecordCount();
        const long fields = records.GetFieldCount();
        for (long page = 1; page <= pages; ++page) {
            records.SetAbsolutePage(page);
            const long rows = std::min(kPageSize, count - (page - 1) * kPageSize);
            for (long row = 0; row < rows; ++row) {
                AppendLine(records, fields, separator, text);
                records.MoveNext();
            }
        }
    };
    return Shielded(*this, szSQL, read, kGetRecordValuesFault, lastError_);
}

// ---- files and descriptions ----------------------------------------------------------------------------------------

int CTDatabase::StoreRecordsetToFile(const char* szSQL, const char* szFile) {
    return Guard::Run(*this, szSQL, 0, [&] {
        CTRecordset records(this);
        if (!records.OpenSQL(szSQL, 1)) return 0;
        return records.SaveAsFile(szFile, 0) ? 1 : SetError("%s", static_cast<LPCTSTR>(records.GetLastErrorString()));
    });
}

CString CTDatabase::GetDbInfor() {
    return GetDbmsName() + ":" + GetServer() + ":" + GetCurDbName();
}
