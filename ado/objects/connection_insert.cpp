// Connection: many rows of a recordset into a table, a member of this server's own.
#include "ado/cursor/block_writer.h"
#include "ado/objects/connection.h"
#include "ado/objects/recordset.h"

namespace tk::ado {

void Connection::InsertRows(Call& call) {
    const auto source = KnownObject<Recordset>(call.Object(0), kRecordsetObject);
    const std::u16string table = call.Text(1);
    const LONG limit = call.Long(2, 0);
    if (!source || table.empty() || limit < 0) throw AdoError(ErrorNumber::InvalidArgument);
    const auto session = OpenedSession(ErrorNumber::ObjectClosed);
    call.ReturnLong(source->CopyRows(session, TableName(ToUtf8(table), *session), limit, commandTimeout_));
}

LONG Recordset::CopyRows(const std::shared_ptr<Session>& session, const std::string& table, LONG limit,
                         LONG timeoutSeconds) {
    ClientCursor& cursor = Cursor();
    ExpectNoEdit();
    if (!cursor.LiveRow()) return 0;
    const std::size_t first = cursor.Index();
    std::vector<std::size_t> list;
    while ((limit == 0 || list.size() < static_cast<std::size_t>(limit)) && cursor.HasIndex(first + list.size()))
        list.push_back(cursor.RowAtIndex(first + list.size()));
    std::vector<std::u16string> names;
    for (const Column& column : Columns())
        names.push_back(column.name);
    BlockWriter(session, table, names, timeoutSeconds).Write(cursor.Store(), list);
    if (cursor.HasIndex(first + list.size())) {
        cursor.MoveTo(cursor.RowAtIndex(first + list.size()));
    } else {
        cursor.MoveAfterLast();
    }
    return static_cast<LONG>(list.size());
}

}  // namespace tk::ado
