// The dynamic properties of a Recordset.
#include "ado/objects/recordset.h"

namespace tk::ado {

std::size_t Recordset::PropertyCount() {
    return RowsetPropertyCount();
}

PropertyInfo Recordset::DescribeProperty(std::size_t index) {
    return DescribeRowsetProperty(index);
}

Value Recordset::ReadProperty(std::size_t index) {
    return ReadRowsetProperty(index, settings_, {IsOpen() ? lock_ : wantedLock_, maxRecords_});
}

void Recordset::WriteProperty(std::size_t index, const Value& value) {
    WriteRowsetProperty(index, settings_, value);
}

}  // namespace tk::ado
