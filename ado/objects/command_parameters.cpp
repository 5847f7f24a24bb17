// Command: its Parameters, as the program declares them or as the database describes them.
#include "ado/cursor/text.h"
#include "ado/objects/command_object.h"
#include "ado/odbc/prepared_text.h"
#include "ado/odbc/procedure_name.h"
#include "ado/rowset/type_map.h"

namespace tk::ado {
namespace {

// SQLProcedureColumns: the columns that are read here, and the kinds of a procedure's column.
enum ProcedureColumn : std::size_t {
    kProcedureName = 2,
    kName = 3,
    kKind = 4,
    kSqlType = 5,
    kTypeName = 6,
    kSize = 7,
    kDigits = 9,
    kNullable = 11,
    kOrdinal = 17
};

constexpr struct {
    long long kind;
    LONG direction;
} kDirections[] = {
    {SQL_PARAM_INPUT, kDirectionInput},
    {SQL_PARAM_INPUT_OUTPUT, kDirectionInputOutput},
    {SQL_PARAM_OUTPUT, kDirectionOutput},
    {SQL_RETURN_VALUE, kDirectionReturnValue},
};

constexpr LONG kParameterSigned = 0x10;
constexpr LONG kParameterNullable = 0x40;
constexpr LONG kParameterLong = 0x80;

/// A declaration from what ODBC says of a parameter.
ParameterDeclaration Declare(int sqlType, long long size, long long digits, bool isNullable) {
    const SqlTypeRule& rule = FindSqlType(sqlType, false);
    ParameterDeclaration declaration;
    declaration.type = rule.fieldType;
    if (rule.dbType == kTypeNumeric) {
        declaration.precision = static_cast<BYTE>(std::clamp<long long>(size, 0, 255));
        declaration.scale = static_cast<BYTE>(std::clamp<long long>(digits, 0, 255));
    }
    constexpr LONG kUnknownSize = 8000;  // what a driver does not say has to have some room all the same
    const bool isKnown = size > 0 && size <= 0x7FFFFFFF;
    declaration.size = rule.fixedSize != 0 ? rule.fixedSize : isKnown ? static_cast<LONG>(size) : kUnknownSize;
    if (IsIntegerType(sqlType) || rule.dbType == kTypeNumeric) declaration.attributes |= kParameterSigned;
    if (isNullable) declaration.attributes |= kParameterNullable;
    if (rule.isLong) declaration.attributes |= kParameterLong;
    return declaration;
}

std::string TextOf(const RowSet& rows, std::size_t row, std::size_t column) {
    return std::string(rows.At(row, column).text);
}

}  // namespace

void CommandObject::DescribeIfUnknown() {
    if (!parameters_.empty() || type_ != kCommandStoredProc || isDescribed_ || text_.empty()) return;
    if (!connection_ || !connection_->IsOpen()) return;
    DescribeParameters();
}

void CommandObject::DescribeParameters() {
    const Ref<Connection> connection = OpenConnection();
    const auto session = connection->OpenedSession(ErrorNumber::InvalidConnection);
    const Command plan = MakePlan(-1);
    parameters_.clear();
    isDescribed_ = true;
    if (plan.kind == Command::Kind::Procedure) {
        DescribeProcedure(*session, plan);
    } else {
        DescribeText(*session, plan);
    }
}

void CommandObject::DescribeProcedure(Session& session, const Command& plan) {
    const ProcedureName wanted = ReadProcedureName(plan.text);
    CatalogCall call;
    call.function = CatalogCall::Function::ProcedureColumns;
    call.schema = wanted.schema;
    call.table = wanted.name;
    const std::shared_ptr<Session> borrowed(&session, [](Session*) {});
    const auto rows = RowSet::Fetch(session.Catalog(call, ExecuteOptions{timeout_, 0}), borrowed, {});
    long long last = -1;
    std::vector<Ref<ParameterObject>> found;
    for (std::size_t row = 0; row < rows->CountRows(); ++row) {
        // The name went as a pattern: other names may answer to it.
        const std::u16string name = ToUtf16(TextOf(*rows, row, kProcedureName));
        if (wanted.isQuoted ? name != ToUtf16(wanted.name) : !SameName(name, ToUtf16(wanted.name))) continue;
        // Another procedure of the same name begins its own list.
        const long long ordinal = rows->At(row, kOrdinal).integer;
        if (ordinal <= last) break;
        last = ordinal;
        const long long kind = rows->At(row, kKind).integer;
        const auto direction = std::ranges::find(kDirections, kind, [](const auto& each) { return each.kind; });
        if (direction == std::end(kDirections) || TextOf(*rows, row, kTypeName) == "void") continue;
        ParameterDeclaration declaration =
            Declare(static_cast<int>(rows->At(row, kSqlType).integer), rows->At(row, kSize).integer,
                    rows->At(row, kDigits).integer, rows->At(row, kNullable).integer != SQL_NO_NULLS);
        declaration.direction = direction->direction;
        const bool isReturned = declaration.direction == kDirectionReturnValue;
        declaration.name = isReturned ? u"RETURN_VALUE" : ToUtf16(TextOf(*rows, row, kName));
        auto parameter = Make<ParameterObject>(std::move(declaration));
        found.insert(isReturned ? found.begin() : found.end(), std::move(parameter));
    }
    parameters_ = std::move(found);
}

void CommandObject::DescribeText(Session& session, const Command& plan) {
    PreparedText statement(session, SqlOf(plan, session).text, timeout_);
    const auto check = [&](SQLRETURN result) {
        if (!SQL_SUCCEEDED(result)) ThrowDiagnostics(SQL_HANDLE_STMT, statement.Get(), result);
    };
    SQLSMALLINT count = 0;
    check(statement.Ask([&](SQLHSTMT handle) { return Odbc().NumParams(handle, &count); }));
    for (SQLSMALLINT number = 1; number <= count; ++number) {
        SQLSMALLINT type = SQL_VARCHAR;
        SQLULEN size = 0;
        SQLSMALLINT digits = 0;
        SQLSMALLINT nullable = SQL_NULLABLE_UNKNOWN;
        check(statement.Ask([&](SQLHSTMT handle) {
            return Odbc().DescribeParam(handle, static_cast<SQLUSMALLINT>(number), &type, &size, &digits, &nullable);
        }));
        ParameterDeclaration declaration =
            Declare(type, static_cast<long long>(size), digits, nullable != SQL_NO_NULLS);
        declaration.name = u"Param" + NumberText(number);
        parameters_.push_back(Make<ParameterObject>(std::move(declaration)));
    }
}

std::size_t ParameterList::ItemCount() const {
    owner_->DescribeIfUnknown();
    return owner_->List().size();
}

std::size_t ParameterList::FindItem(const VARIANT& index) const {
    return ItemIndex(index, ItemCount(), [this](std::u16string_view name) -> std::optional<std::size_t> {
        const auto& list = owner_->List();
        for (std::size_t i = 0; i < list.size(); ++i) {
            if (SameName(list[i]->Declaration().name, name)) return i;
        }
        return std::nullopt;
    });
}

void ParameterList::Append(Call& call) {
    auto parameter = KnownObject<ParameterObject>(call.Object(0), kParameterObject);
    if (!parameter) throw AdoError(ErrorNumber::InvalidArgument);
    parameter->ExpectComplete();
    auto& list = owner_->List();
    const std::u16string& name = parameter->Declaration().name;
    for (const auto& each : list) {
        const bool isSame =
            each.Get() == parameter.Get() || (!name.empty() && SameName(each->Declaration().name, name));
        if (isSame) throw AdoError(ErrorNumber::ObjectInCollection, name);
    }
    owner_->MarkOwn();
    list.push_back(std::move(parameter));
}

void ParameterList::Delete(Call& call) {
    const std::size_t index = WithIndex(call, 0, [this](const VARIANT& given) { return FindItem(given); });
    auto& list = owner_->List();
    list.erase(list.begin() + static_cast<std::ptrdiff_t>(index));
    owner_->MarkOwn();
}

void ParameterList::Describe(Call&) {
    owner_->DescribeParameters();
}

}  // namespace tk::ado
