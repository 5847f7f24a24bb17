// The dynamic properties of a Connection: what each is called, and which answer of the driver it is made from.
//
// Before the connection is open there are only those that say how to open it.
#include "ado/cursor/text.h"
#include "ado/objects/connection.h"
#include "ado/rowset/row_set.h"

namespace tk::ado {
namespace {

enum class From : unsigned char {
    Text,       // SQLGetInfo, as it is
    Number,     // SQLGetInfo, as it is
    Codes,      // SQLGetInfo: one of several values, each with a value of ours
    Bits,       // SQLGetInfo: a set of bits, each with a bit of ours
    Yes,        // SQLGetInfo text "Y": True
    YesNumber,  // SQLGetInfo text "Y": 1
    Constant,   // number or flag
    Fixed,      // text
    Special,
};

struct Pair {
    unsigned theirs;
    LONG ours;
};
struct Map {
    const Pair* pairs = nullptr;
    std::size_t count = 0;
};
template <std::size_t Count>
constexpr Map MapOf(const Pair (&pairs)[Count]) {
    return {pairs, Count};
}

constexpr Pair kUsage[] = {{1, 1}, {4, 2}, {8, 4}, {16, 8}};
constexpr Pair kIdentifierCase[] = {{1, 1}, {2, 2}, {3, 4}, {4, 8}};
constexpr Pair kIsolations[] = {{1, 0x100}, {2, 0x1000}, {4, 0x10000}, {8, 0x100000}};
constexpr Pair kTransactionDdl[] = {{0, 0}, {1, 1}, {2, 8}, {3, 2}, {4, 4}};
constexpr Pair kNullCollation[] = {{0, 2}, {1, 4}, {2, 8}, {4, 1}};
constexpr Pair kNullConcatenation[] = {{0, 1}, {1, 2}};
constexpr Pair kGroupBy[] = {{0, 1}, {1, 4}, {2, 2}, {3, 8}, {4, 16}};
constexpr Pair kSubqueries[] = {{1, 2}, {2, 4}, {4, 8}, {8, 16}, {16, 1}};
constexpr Pair kNotNullColumns[] = {{0, 0}, {1, 1}};
constexpr Pair kSqlSupport[] = {{0, 1}, {1, 3}, {2, 7}};
constexpr Pair kPrepare[] = {{0, 1}, {1, 2}, {2, 2}};

enum Special : int {
    kDbmsName,
    kUserName,
    kCurrentCatalog,
    kConnectionStatus,
    kAutocommitIsolation,
    kUserId,
    kPassword,
    kDataSource,
    kInitialCatalog,
    kLocation,
    kExtendedProperties,
    kPersistSecurityInfo,
    kConnectTimeout,
    kLocaleIdentifier,
    kMode,
    kOleDbServices,
};

// SQLGetInfo items that the special ones ask for.
constexpr unsigned short kInfoDbmsName = 17;
constexpr unsigned short kInfoDatabaseName = 16;
constexpr unsigned short kInfoUserName = 47;

bool IsPasswordKey(std::string_view key) {
    const std::u16string name = ToUtf16(key);
    return SameName(name, u"PWD") || SameName(name, u"Password");
}

LONG Mapped(Map map, unsigned value) {
    for (std::size_t i = 0; i < map.count; ++i) {
        if (map.pairs[i].theirs == value) return map.pairs[i].ours;
    }
    return 0;
}

LONG MappedBits(Map map, unsigned value) {
    LONG bits = 0;
    for (std::size_t i = 0; i < map.count; ++i) {
        if ((value & map.pairs[i].theirs) != 0) bits |= map.pairs[i].ours;
    }
    return bits;
}

}  // namespace

struct Connection::PropertyRow {
    const char16_t* name;
    VARTYPE type;
    From from;
    int code = 0;  // SQLGetInfo item, constant, or Special
    Map map = {};
    const char16_t* fixed = nullptr;
    bool writable = false;
    bool beforeOpen = false;
};

std::span<const Connection::PropertyRow> Connection::PropertyRows() {
    constexpr bool kWritable = true;
    constexpr bool kBeforeOpen = true;
    static constexpr PropertyRow kRows[] = {
        // Those that say how to open come first: an index into the short list is one into the long list too.
        {u"User ID", VT_BSTR, From::Special, kUserId, {}, nullptr, kWritable, kBeforeOpen},
        {u"Password", VT_BSTR, From::Special, kPassword, {}, nullptr, kWritable, kBeforeOpen},
        {u"Data Source", VT_BSTR, From::Special, kDataSource, {}, nullptr, kWritable, kBeforeOpen},
        {u"Initial Catalog", VT_BSTR, From::Special, kInitialCatalog, {}, nullptr, kWritable, kBeforeOpen},
        {u"Location", VT_BSTR, From::Special, kLocation, {}, nullptr, kWritable, kBeforeOpen},
        {u"Extended Properties", VT_BSTR, From::Special, kExtendedProperties, {}, nullptr, kWritable, kBeforeOpen},
        {u"Persist Security Info", VT_BOOL, From::Special, kPersistSecurityInfo, {}, nullptr, kWritable, kBeforeOpen},
        {u"Connect Timeout", VT_I4, From::Special, kConnectTimeout, {}, nullptr, kWritable, kBeforeOpen},
        {u"Locale Identifier", VT_I4, From::Special, kLocaleIdentifier, {}, nullptr, kWritable, kBeforeOpen},
        {u"Mode", VT_I4, From::Special, kMode, {}, nullptr, kWritable, kBeforeOpen},
        {u"Prompt", VT_I2, From::Constant, 4, {}, nullptr, kWritable, kBeforeOpen},
        {u"Window Handle", VT_I4, From::Constant, 0, {}, nullptr, kWritable, kBeforeOpen},
        {u"OLE DB Services", VT_I4, From::Special, kOleDbServices, {}, nullptr, kWritable, kBeforeOpen},

        {u"DBMS Name", VT_BSTR, From::Special, kDbmsName},
        {u"DBMS Version", VT_BSTR, From::Text, 18},
        {u"Data Source Name", VT_BSTR, From::Text, 2},
        {u"Server Name", VT_BSTR, From::Text, 13},
        {u"User Name", VT_BSTR, From::Special, kUserName},
        {u"Current Catalog", VT_BSTR, From::Special, kCurrentCatalog, {}, nullptr, kWritable},
        {u"Provider Name", VT_BSTR, From::Fixed, 0, {}, u"MSDASQL.DLL"},
        {u"Provider Friendly Name", VT_BSTR, From::Fixed, 0, {}, u"Microsoft OLE DB Provider for ODBC Drivers"},
        {u"Provider Version", VT_BSTR, From::Fixed, 0, {}, u"02.80.0000.0000"},
        {u"OLE DB Version", VT_BSTR, From::Fixed, 0, {}, u"02.00"},
        {u"Driver Name", VT_BSTR, From::Text, 6},
        {u"Driver Version", VT_BSTR, From::Text, 7},
        {u"Driver ODBC Version", VT_BSTR, From::Text, 77},
        {u"Connection Status", VT_I4, From::Special, kConnectionStatus},
        {u"Active Sessions", VT_I4, From::Number, 0},
        {u"Active Statements", VT_I4, From::Number, 1},
        {u"Catalog Term", VT_BSTR, From::Text, 42},
        {u"Schema Term", VT_BSTR, From::Text, 39},
        {u"Procedure Term", VT_BSTR, From::Text, 40},
        {u"Table Term", VT_BSTR, From::Text, 45},
        {u"Catalog Location", VT_I4, From::Number, 114},
        {u"Catalog Usage", VT_I4, From::Bits, 92, MapOf(kUsage)},
        {u"Schema Usage", VT_I4, From::Bits, 91, MapOf(kUsage)},
        {u"Identifier Case Sensitivity", VT_I4, From::Codes, 28, MapOf(kIdentifierCase)},
        {u"Isolation Levels", VT_I4, From::Bits, 72, MapOf(kIsolations)},
        {u"Autocommit Isolation Levels", VT_I4, From::Special, kAutocommitIsolation},
        {u"Transaction DDL", VT_I4, From::Codes, 46, MapOf(kTransactionDdl)},
        {u"NULL Collation Order", VT_I4, From::Codes, 85, MapOf(kNullCollation)},
        {u"NULL Concatenation Behavior", VT_I4, From::Codes, 22, MapOf(kNullConcatenation)},
        {u"GROUP BY Support", VT_I4, From::Codes, 88, MapOf(kGroupBy)},
        {u"Subquery Support", VT_I4, From::Bits, 95, MapOf(kSubqueries)},
        {u"ORDER BY Columns in Select List", VT_BOOL, From::Yes, 90},
        {u"Column Definition", VT_I4, From::Codes, 75, MapOf(kNotNullColumns)},
        {u"Maximum Index Size", VT_I4, From::Number, 102},
        {u"Maximum Row Size", VT_I4, From::Number, 104},
        {u"Maximum Row Size Includes BLOB", VT_BOOL, From::Yes, 103},
        {u"Maximum Tables in SELECT", VT_I4, From::Number, 106},
        {u"Max Columns in GROUP BY", VT_I4, From::Number, 97},
        {u"Max Columns in Index", VT_I4, From::Number, 98},
        {u"Max Columns in ORDER BY", VT_I4, From::Number, 99},
        {u"Max Columns in Select", VT_I4, From::Number, 100},
        {u"Max Columns in Table", VT_I4, From::Number, 101},
        {u"Multiple Results", VT_I4, From::YesNumber, 36},
        {u"Read-Only Data Source", VT_BOOL, From::Yes, 25},
        {u"Accessible Procedures", VT_BOOL, From::Yes, 20},
        {u"Accessible Tables", VT_BOOL, From::Yes, 19},
        {u"Stored Procedures", VT_BOOL, From::Yes, 21},
        {u"Outer Joins", VT_BSTR, From::Text, 38},
        {u"Outer Join Capabilities", VT_I4, From::Number, 115},
        {u"Like Escape Clause", VT_BSTR, From::Text, 113},
        {u"Special Characters", VT_BSTR, From::Text, 94},
        {u"Numeric Functions", VT_I4, From::Number, 49},
        {u"String Functions", VT_I4, From::Number, 50},
        {u"System Functions", VT_I4, From::Number, 51},
        {u"Time/Date Functions", VT_I4, From::Number, 52},
        {u"File Usage", VT_I4, From::Number, 84},
        {u"SQL Support", VT_I4, From::Codes, 15, MapOf(kSqlSupport)},
        {u"SQL Grammar Support", VT_I4, From::Number, 15},
        {u"Prepare Abort Behavior", VT_I4, From::Codes, 24, MapOf(kPrepare)},
        {u"Prepare Commit Behavior", VT_I4, From::Codes, 23, MapOf(kPrepare)},
        {u"Asynchable Abort", VT_BOOL, From::Constant, 0},
        {u"Asynchable Commit", VT_BOOL, From::Constant, 0},
        {u"Heterogeneous Table Support", VT_I4, From::Constant, 0},
        {u"Isolation Retention", VT_I4, From::Constant, 0},
        {u"Multi-Table Update", VT_BOOL, From::Constant, 0},
        {u"Multiple Parameter Sets", VT_BOOL, From::Constant, 1},
        {u"Multiple Storage Objects", VT_BOOL, From::Constant, 0},
        {u"OLE Object Support", VT_I4, From::Constant, 0},
        {u"Open Rowset Support", VT_I4, From::Constant, 0},
        {u"Output Parameter Availability", VT_I4, From::Constant, 0},
        {u"Pass By Ref Accessors", VT_BOOL, From::Constant, 0},
        {u"Persistent ID Type", VT_I4, From::Constant, 0},
        {u"Rowset Conversions on Command", VT_BOOL, From::Constant, 1},
        {u"Structured Storage", VT_I4, From::Constant, 0},
        {u"Data Source Object Threading Model", VT_I4, From::Constant, 0},
    };
    static_assert(std::ranges::is_partitioned(kRows, [](const PropertyRow& row) { return row.beforeOpen; }));
    return kRows;
}

std::size_t Connection::PropertyCount() {
    const auto rows = PropertyRows();
    if (IsOpen()) return rows.size();
    return static_cast<std::size_t>(std::ranges::count_if(rows, [](const PropertyRow& row) { return row.beforeOpen; }));
}

PropertyInfo Connection::DescribeProperty(std::size_t index) {
    const PropertyRow& row = PropertyRows()[index];
    return {row.name, row.type, row.writable ? kPropertyReadWrite : kPropertyReadOnly};
}

Value Connection::ReadProperty(std::size_t index) {
    const PropertyRow& row = PropertyRows()[index];
    if (row.from == From::Special) return ReadSpecial(row.code);
    HRESULT result = S_OK;
    if (row.from == From::Constant) {
        return row.type == VT_BOOL ? Value::Boolean(row.code != 0)
                                   : Value(static_cast<LONG>(row.code)).As(row.type, result);
    }
    if (row.from == From::Fixed) return Value::Text(row.fixed);
    const auto session = OpenedSession(ErrorNumber::ObjectClosed);
    const auto item = static_cast<unsigned short>(row.code);
    switch (row.from) {
        case From::Number:
            return Value(static_cast<LONG>(session->InfoNumber(item)));
        case From::Codes:
            return Value(Mapped(row.map, session->InfoNumber(item)));
        case From::Bits:
            return Value(MappedBits(row.map, session->InfoNumber(item)));
        case From::Yes:
            return Value::Boolean(session->InfoText(item) == "Y");
        case From::YesNumber:
            return Value(session->InfoText(item) == "Y" ? LONG{1} : LONG{0});
        default:
            return Value::Text(ToUtf16(session->InfoText(item)));
    }
}

Value Connection::ReadSpecial(int which) {
    const ConnectionString parsed = Parsed();
    const ConnectionProperties properties = CurrentProperties();
    const auto text = [](const std::string& utf8) { return Value::Text(ToUtf16(utf8)); };
    switch (which) {
        case kDbmsName:
            return text(properties.dbmsName ? *properties.dbmsName
                                            : OpenedSession(ErrorNumber::ObjectClosed)->InfoText(kInfoDbmsName));
        case kUserName: {
            const auto session = OpenedSession(ErrorNumber::ObjectClosed);
            const std::string user = session->InfoText(kInfoUserName);
            const char* const query = session->Profile().userQuery;
            if (!user.empty() || query == nullptr) return text(user);
            const auto answer = RowSet::Fetch(session->Execute(query, ExecuteOptions{}), session, {});
            return text(std::string(answer->HasRow(0) ? answer->At(0, 0).text : std::string_view()));
        }
        case kCurrentCatalog: {
            const auto session = OpenedSession(ErrorNumber::ObjectClosed);
            const std::string catalog = session->CurrentCatalog();
            return text(catalog.empty() ? session->InfoText(kInfoDatabaseName) : catalog);
        }
        case kConnectionStatus:
            return Value(OpenedSession(ErrorNumber::ObjectClosed)->IsDead() ? LONG{2} : LONG{1});
        case kAutocommitIsolation:
            return Value(MappedBits(MapOf(kIsolations), OpenedSession(ErrorNumber::ObjectClosed)->Isolation()));
        case kUserId:
            return user_.empty() ? text(properties.userId) : Value::Text(user_);
        case kPassword:
            // Once connected a password shows only where the string says so.
            if (IsOpen() && !properties.persistSecurityInfo) return Value::Text({});
            return password_.empty() ? text(parsed.Get({"Password", "PWD"})) : Value::Text(password_);
        case kDataSource:
            return text(properties.dataSource);
        case kInitialCatalog:
            return text(properties.initialCatalog);
        case kLocation:
            return text(properties.location);
        case kExtendedProperties: {
            if (!properties.extendedProperties.empty() || parsed.Find("Extended Properties") != nullptr) {
                // As in the connection string, a password is not shown once it has done its work.
                const bool isHidden = IsOpen() && !properties.persistSecurityInfo;
                return text(isHidden ? ConnectionString::Parse(properties.extendedProperties).WithoutPassword()
                                     : properties.extendedProperties);
            }
            // What goes to the driver as it stands is an extended property, passwords apart.
            if (!SameName(ToUtf16(parsed.Provider()), u"MSDASQL")) return Value::Text({});
            std::string extended;
            for (const auto& [key, value, braced] : parsed.Pairs()) {
                if (IsPasswordKey(key) || SameName(ToUtf16(key), u"Provider")) continue;
                if (!extended.empty()) extended += ';';
                extended += key + "=" + (braced ? "{" + value + "}" : value);
            }
            return text(extended);
        }
        case kPersistSecurityInfo:
            return Value::Boolean(properties.persistSecurityInfo);
        case kConnectTimeout:
            return Value(static_cast<LONG>(properties.connectTimeoutSeconds.value_or(connectionTimeout_)));
        case kLocaleIdentifier:
            return Value(static_cast<LONG>(properties.localeIdentifier));
        case kMode:
            return Value(static_cast<LONG>(properties.mode.value_or(mode_)));
        case kOleDbServices:
            return Value(static_cast<LONG>(properties.oleDbServices));
        default:
            return Value();
    }
}

void Connection::WriteProperty(std::size_t index, const Value& value) {
    const PropertyRow& row = PropertyRows()[index];
    if (row.from == From::Special && row.code == kCurrentCatalog) {
        OpenedSession(ErrorNumber::ObjectClosed)->SetCurrentCatalog(ToUtf8(ViewOf(value.Get().bstrVal)));
        return;
    }
    ExpectClosed();
    // A property of the opening is the pair of its name in the connection string.
    ConnectionString parsed = ConnectionString::Parse(ToUtf8(text_));
    HRESULT result = S_OK;
    std::u16string text(ViewOf(value.As(VT_BSTR, result).Get().bstrVal));
    if (row.type == VT_BOOL) text = value.Get().boolVal != VARIANT_FALSE ? u"True" : u"False";
    parsed.Set(ToUtf8(row.name), ToUtf8(text));
    std::string printed;
    for (const auto& [key, pairValue, braced] : parsed.Pairs()) {
        std::string quoted;
        for (const char c : pairValue)
            quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
        printed += (printed.empty() ? "" : ";") + key + "=" + (braced ? "{" + pairValue + "}" : "\"" + quoted + "\"");
    }
    text_ = ToUtf16(printed);
}

}  // namespace tk::ado
