#include "tools/tkdb/copy_command.h"

#include <fmt/format.h>

#include <optional>

#include "tools/tkdb/command_support.h"
#include "tools/tkdb/database_system.h"
#include "tools/tkdb/interruption.h"
#include "tools/tkdb/print.h"
#include "tools/tkdb/progress.h"
#include "tools/tkdb/row_count.h"
#include "tools/tkdb/row_inserter.h"
#include "tools/tkdb/standard_streams.h"
#include "tools/tkdb/table_maker.h"
#include "tools/tkdb/terminal_text.h"

namespace tk::tools {
namespace {

constexpr long kRowsAtATime = 50'000;

/// Thrown to leave a table; the reason is told by the library, or here.
struct Stop {
    CString reason;
    int code = kDatabaseRefused;
};

void Do(CTDatabase& database, const std::string& statement) {
    if (database.ExecuteSQL(statement.c_str()) == 0) throw Stop{database.GetLastErrorString()};
}

/// On the connection of the database itself, where a recordset that opens by a text makes one of its own.
void Ask(CTDatabase& database, const std::string& query, CTRecordset& answer) {
    const COleDispatchDriver rowset(database.GetRecordset(query.c_str()));
    if (rowset.m_lpDispatch == nullptr) throw Stop{database.GetLastErrorString()};
    if (answer.OpenDispatch(rowset.m_lpDispatch) == 0) throw Stop{answer.GetLastErrorString()};
}

long Count(CTDatabase& database, const std::string& table) {
    long count = 0;
    const CString reason = CountRowsOf(database, table, count);
    if (!reason.IsEmpty()) throw Stop{reason};
    return count;
}

/// The table while it is being made: gone again unless it is kept, and the one that it replaces back.
class NewTable {
public:
    /// @param isApart  the name is one that nobody else uses
    NewTable(CTDatabase& target, const std::string& name, bool isApart)
        : target_(target), name_(name), isApart_(isApart) {
        target_.BeginTrans();
    }
    NewTable(const NewTable&) = delete;
    NewTable& operator=(const NewTable&) = delete;
    ~NewTable() {
        if (isKept_) return;
        try {
            target_.RollbackTrans();
            // Some systems end the transaction when a table is made.
            if (isMade_ && !isInstead_) Drop();
        } catch (CException* e) {
            e->Delete();  // the failure that led here is told
        }
    }

    void Replace() {
        isInstead_ = true;
        Do(target_, "DROP TABLE " + Quoted(name_));
    }
    void Make(const std::string& statement) {
        Do(target_, statement);
        isMade_ = true;
    }
    void Keep() {
        target_.CommitTrans();
        isKept_ = true;
    }

private:
    void Drop() {
        if (!isApart_) {
            if (target_.IsTableExist(name_.c_str()) != 0) target_.DropTable(name_.c_str());
            return;
        }
        // It was seen to be there still once, on a busy machine, for a reason nobody found: so it is asked for
        // directly, and again.
        constexpr int kTimes = 3;
        const std::string statement = "DROP TABLE IF EXISTS " + Quoted(name_);
        for (int i = 0; i < kTimes && target_.ExecuteSQL(statement.c_str()) == 0; ++i) {}
    }

    CTDatabase& target_;
    std::string name_;
    bool isApart_;
    bool isInstead_ = false;
    bool isMade_ = false;
    bool isKept_ = false;
};

long InsertAll(CTDatabase& source, const std::string& table, CTDatabase& target, const std::string& name) {
    CTRecordset records(&source);
    if (records.OpenTable(table.c_str(), 1) == 0) throw Stop{records.GetLastErrorString()};
    RowInserter inserter(target);
    if (!inserter.CanInsert()) throw Stop{"the target's provider takes no rows of other data sources"};
    Progress progress("rows");
    long rows = 0;
    while (const long inserted = inserter.Insert(records, Quoted(name).c_str(), kRowsAtATime)) {
        rows += inserted;
        progress.Advance(static_cast<std::size_t>(inserted));
        if (Interruption::Wanted()) throw Stop{"stopped", kInterrupted};
    }
    return rows;
}

/// The right to the names that stand in for a table while it is copied, where making one cannot be undone: nobody else
/// has it at the same time, so that what is found under them was left by a run that ended.
class Turn {
public:
    Turn(CTDatabase& target, const TableScripts& scripts)
        : target_(target), lock_(fmt::format("CONCAT(MD5(DATABASE()), ' {}')", scripts.made)) {
        // The server may take a moment to see that a run was killed.
        constexpr int kSeconds = 5;
        CTRecordset answer(&target);
        Ask(target, fmt::format("SELECT GET_LOCK({}, {})", lock_, kSeconds), answer);
        if (answer.GetEof() || answer.GetStringValue(0L) != "1") throw Stop{"another run is copying it"};
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    ~Turn() {
        try {
            target_.ExecuteSQL(("DO RELEASE_LOCK(" + lock_ + ")").c_str());
        } catch (CException* e) {
            e->Delete();  // it ends with the connection
        }
    }

private:
    CTDatabase& target_;
    std::string lock_;
};

/// Stops at a table that another one refers to: the reference would go with the old table to its other name, and keep
/// it from being dropped.
void RequireNoReferences(CTDatabase& target, const std::string& name) {
    CTRecordset rows(&target);
    Ask(target,
        "SELECT REFERENCED_TABLE_NAME, CONCAT(TABLE_SCHEMA, '.', TABLE_NAME),"
        " TABLE_SCHEMA = DATABASE() AND TABLE_NAME = REFERENCED_TABLE_NAME"
        " FROM information_schema.KEY_COLUMN_USAGE WHERE REFERENCED_TABLE_SCHEMA = DATABASE()",
        rows);
    for (; !rows.GetEof(); rows.MoveNext()) {
        const bool isItself = rows.GetStringValue(2L) == "1";
        if (isItself || rows.GetStringValue(0L) != name.c_str()) continue;
        throw Stop{"cannot be replaced, as " + rows.GetStringValue(1L) + " refers to it"};
    }
}

std::string OldName(const TableScripts& scripts) {
    return Quoted(NameApart("old", scripts.name));
}

/// What a run that was killed at its end has left of the table that it had replaced.
void DropOld(CTDatabase& target, const TableScripts& scripts) {
    Do(target, "DROP TABLE IF EXISTS " + OldName(scripts));
}

/// Gives a table that is whole its name, in one step with taking the name from the table that it replaces.
void PutInPlace(CTDatabase& target, const TableScripts& scripts, bool replaces) {
    const std::string old = OldName(scripts);
    const std::string name = Quoted(scripts.name);
    const std::string made = Quoted(scripts.made);
    if (!replaces) return Do(target, "RENAME TABLE " + made + " TO " + name);
    DropOld(target, scripts);
    Do(target, "RENAME TABLE " + name + " TO " + old + ", " + made + " TO " + name);
    try {
        Do(target, "DROP TABLE " + old);
    } catch (const Stop&) {
        // A table refers to it that is not shown to everybody.
        Do(target, "RENAME TABLE " + name + " TO " + made + ", " + old + " TO " + name);
        throw;
    }
}

/// Stops where a table that could not be replaced would be gone.
void RequireReplaceable(CTDatabase& target, const TableScripts& scripts, bool isApart) {
    if (isApart) return RequireNoReferences(target, scripts.name);
    if (!UndoesTables(target)) throw Stop{"cannot be replaced, as dropping a table cannot be undone there"};
}

/// @return the rows of the table; negative: there already
long CopyTable(CTDatabase& source, const std::string& table, CTDatabase& target, bool replace) {
    TableScripts scripts;
    const CString reason = MakeScripts(source, table, target, scripts);
    if (!reason.IsEmpty()) throw Stop{reason};
    const bool isApart = scripts.made != scripts.name;
    std::optional<Turn> turn;
    if (isApart) turn.emplace(target, scripts);
    const bool replaces = target.IsTableExist(scripts.name.c_str()) != 0;
    if (replaces) {
        const long there = Count(target, scripts.name);
        if (there == Count(source, table)) {
            if (isApart) DropOld(target, scripts);
            return -1;
        }
        if (!replace) throw Stop{fmt::format("there already, with {} other rows: {}", there, scripts.name).c_str()};
        RequireReplaceable(target, scripts, isApart);
    }
    NewTable made(target, scripts.made, isApart);
    if (isApart) {
        Do(target, "DROP TABLE IF EXISTS " + Quoted(scripts.made));  // what a run left that was killed
    } else if (replaces) {
        made.Replace();
    }
    made.Make(scripts.create);
    const long rows = InsertAll(source, table, target, scripts.made);
    for (const std::string& index : scripts.indexes)
        Do(target, index);
    if (Count(target, scripts.made) != rows) throw Stop{("rows are missing: " + scripts.name).c_str()};
    if (isApart) PutInPlace(target, scripts, replaces);
    made.Keep();
    for (const std::string& index : scripts.leftOut) {
        static_cast<void>(Refuse(
            fmt::format("{}: without its index {}, which is of some rows or of an expression", table, index).c_str()));
    }
    return rows;
}

bool Open(CTDatabase& database, const std::string& connection) {
    return OpenDatabase(database, connection) && UseQuotes(database) != 0;
}

}  // namespace

int CopyTables(const std::string& source, const std::vector<std::string>& tables, const std::string& target,
               bool replace) {
    CTDatabase from;
    CTDatabase to;
    if (!Open(from, source)) return Refuse(from.GetLastErrorString());
    if (!Open(to, target)) return Refuse(to.GetLastErrorString());
    const Interruption interruption;
    for (const std::string& table : tables) {
        try {
            const long rows = CopyTable(from, TerminalToGbk(table), to, replace);
            Print("{}: {}\n", table, rows < 0 ? "there already" : fmt::format("{} row(s)", rows));
            FlushOutput();
        } catch (const Stop& stop) {
            static_cast<void>(Refuse((TerminalToGbk(table) + ": " + std::string(stop.reason)).c_str()));
            return stop.code;
        } catch (CException* e) {
            return Refuse(e);
        }
    }
    return kSuccess;
}

}  // namespace tk::tools
