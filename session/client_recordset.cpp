// What a client does with its recordset: opening one, and one member of it for each of these.
#include "session/inside.h"
#include "tkkernel/util.h"

using namespace tk::session;

namespace {

/// A value that has to be cleared.
class Value {
public:
    explicit Value(const VARIANT& value) : value_(value) {}
    Value(const Value&) = delete;
    Value& operator=(const Value&) = delete;
    ~Value() { VariantClear(&value_); }
    operator const VARIANT&() const { return value_; }

private:
    VARIANT value_;
};

/// What a member without a result gives.
constexpr int kNothing = 0;

VARIANT NoValue() {
    VARIANT value;
    VariantInit(&value);
    return value;
}

/// The client was never given a server.
struct NoServer {};

}  // namespace

/// Runs work(recordset) while one is held; a fault returns it.
template <typename Result, typename Work>
Result Inside::OnRecordset(CTDataClient& client, const char* place, Result refused, const Work& work) {
    return RunOr(
        client, place, refused,
        [&] {
            if (!client.IsEnableRecordset()) return refused;
            CTRecordset* const recordset = Held(client.recordset_, client.server_.load());
            return recordset != nullptr ? work(*recordset) : refused;
        },
        [&] { client.CloseSQL(); });
}

int Inside::OpenRecordset(CTDataClient& client, const char* place, const char* source, long pageSize, int option,
                          int (CTRecordset::*open)(const char*, int)) {
    return RunOr(
        client, place, 0,
        [&] {
            client.CloseSQL();
            CTDataServer* const server = client.server_;
            // Contract: a missing server is a fault here.
            if (server == nullptr) throw NoServer();
            Take(client.recordset_, *server, server->InvokeRecordset(&client));
            if (!client.IsEnableRecordset()) return 0;
            CTRecordset* const recordset = Held(client.recordset_, server);
            if (recordset == nullptr) return 0;  // the server has taken it back meanwhile
            if ((recordset->*open)(source, option)) {
                recordset->SetPageSize(pageSize);
                return 1;
            }
            client.SetLastErrorString(recordset->GetLastErrorString());
            client.CloseSQL();
            return 0;
        },
        [&] { client.CloseSQL(); });
}

int CTDataClient::OpenSQL(const char* szSQL, long nPageSize, int nOption) {
    return Inside::OpenRecordset(*this, "OpenSQL", szSQL, nPageSize, nOption, &CTRecordset::OpenSQL);
}

int CTDataClient::OpenTable(const char* szTable, long nPageSize, int nOption) {
    return Inside::OpenRecordset(*this, "OpenTable", szTable, nPageSize, nOption, &CTRecordset::OpenTable);
}

int CTDataClient::OpenProc(const char* szProcedure, long nPageSize, int nOption) {
    return Inside::OpenRecordset(*this, "OpenProc", szProcedure, nPageSize, nOption, &CTRecordset::OpenProcedure);
}

// ---- the whole -----------------------------------------------------------------------------------------------------

int CTDataClient::SaveFile(const char* szPath) {
    return Inside::OnRecordset(*this, "SaveFile", 0, [&](CTRecordset& recordset) {
        // Contract: success, whether it was saved or not.
        if (!recordset.SaveAsFile(szPath, 0)) SetLastErrorString(recordset.GetLastErrorString());
        return 1;
    });
}

IDispatch* CTDataClient::GetDispatch() {
    return Inside::OnRecordset(*this, "GetDispatch", static_cast<IDispatch*>(nullptr), [&](CTRecordset& recordset) {
        IDispatch* const dispatch = recordset.GetDispatch();
        if (dispatch == nullptr) SetLastErrorString(recordset.GetLastErrorString());
        return dispatch;
    });
}

int CTDataClient::GetRecordEof() {
    return Inside::OnRecordset(*this, "GetRecordEof", 0, [](CTRecordset& recordset) { return recordset.GetEof(); });
}

long CTDataClient::GetRecordCount() {
    return Inside::OnRecordset(*this, "GetRecordCount", 0L,
                               [](CTRecordset& recordset) { return recordset.GetRecordCount(); });
}

// ---- pages ---------------------------------------------------------------------------------------------------------

long CTDataClient::GetPageCount() {
    return Inside::OnRecordset(*this, "GetPageCount", 0L,
                               [](CTRecordset& recordset) { return recordset.GetPageCount(); });
}

long CTDataClient::GetPageSize() {
    return Inside::OnRecordset(*this, "GetPageSize", 0L,
                               [](CTRecordset& recordset) { return recordset.GetPageSize(); });
}

long CTDataClient::GetPageCode() {
    return Inside::OnRecordset(*this, "GetPageCode", 0L,
                               [](CTRecordset& recordset) { return recordset.GetAbsolutePage(); });
}

int CTDataClient::SetPageCode(long nPage) {
    return Inside::OnRecordset(*this, "SetPageCode", 0, [&](CTRecordset& recordset) {
        recordset.SetAbsolutePage(nPage);
        return 1;
    });
}

// ---- values --------------------------------------------------------------------------------------------------------

CString CTDataClient::GetValueString(VARIANT key) {
    return Inside::OnRecordset(*this, "GetValueString", CString(),
                               [&](CTRecordset& recordset) { return VariantToString(Value(recordset.GetValue(key))); });
}

long CTDataClient::GetValueLong(VARIANT key) {
    return Inside::OnRecordset(*this, "GetValueLong", 0L, [&](CTRecordset& recordset) {
        return static_cast<long>(VariantToLong(Value(recordset.GetValue(key))));
    });
}

VARIANT CTDataClient::GetValueVariant(VARIANT key) {
    return Inside::OnRecordset(*this, "GetValueVariant", NoValue(),
                               [&](CTRecordset& recordset) { return recordset.GetValue(key); });
}

double CTDataClient::GetValueDouble(VARIANT key) {
    return Inside::OnRecordset(*this, "GetValueDouble", 0.0, [&](CTRecordset& recordset) {
        return static_cast<double>(VariantToDouble(Value(recordset.GetValue(key))));
    });
}

void CTDataClient::SetValueString(VARIANT key, const char* szValue) {
    Inside::OnRecordset(*this, "SetValueString", kNothing, [&](CTRecordset& recordset) {
        recordset.SetValue(key, COleVariant(CString(szValue)));
        return kNothing;
    });
}

void CTDataClient::SetValueLong(VARIANT key, long nValue) {
    Inside::OnRecordset(*this, "SetValueLong", kNothing, [&](CTRecordset& recordset) {
        recordset.SetValue(key, COleVariant(nValue));
        return kNothing;
    });
}

void CTDataClient::SetValueVariant(VARIANT key, VARIANT value) {
    Inside::OnRecordset(*this, "SetValueVariant", kNothing, [&](CTRecordset& recordset) {
        recordset.SetValue(key, value);
        return kNothing;
    });
}

void CTDataClient::SetValueDouble(VARIANT key, double nValue) {
    Inside::OnRecordset(*this, "SetValueDouble", kNothing, [&](CTRecordset& recordset) {
        recordset.SetValue(key, COleVariant(nValue));
        return kNothing;
    });
}

// ---- moves ---------------------------------------------------------------------------------------------------------

void CTDataClient::MoveNext() {
    Inside::OnRecordset(*this, "MoveNext", kNothing, [](CTRecordset& recordset) {
        recordset.MoveNext();
        return kNothing;
    });
}

void CTDataClient::MoveLast() {
    Inside::OnRecordset(*this, "MoveLast", kNothing, [](CTRecordset& recordset) {
        recordset.MoveLast();
        return kNothing;
    });
}

void CTDataClient::MoveFirst() {
    Inside::OnRecordset(*this, "MoveFirst", kNothing, [](CTRecordset& recordset) {
        recordset.MoveFirst();
        return kNothing;
    });
}

void CTDataClient::MovePrev() {
    Inside::OnRecordset(*this, "MovePrev", kNothing, [](CTRecordset& recordset) {
        recordset.MovePrevious();
        return kNothing;
    });
}

// ---- fields --------------------------------------------------------------------------------------------------------

CString CTDataClient::GetFieldName(long nIndex) {
    return Inside::OnRecordset(*this, "GetFieldName", CString(),
                               [&](CTRecordset& recordset) { return recordset.GetFieldName(nIndex); });
}

long CTDataClient::GetFieldIndex(const char* szName) {
    return Inside::OnRecordset(*this, "GetFieldIndex", -1L, [&](CTRecordset& recordset) {
        return static_cast<long>(recordset.GetFieldIndex(szName));
    });
}

long CTDataClient::GetFieldCount() {
    return Inside::OnRecordset(*this, "GetFieldCount", 0L,
                               [](CTRecordset& recordset) { return recordset.GetFieldCount(); });
}

CString CTDataClient::GetAllFieldNames(const char* szSeparator) {
    return Inside::OnRecordset(*this, "GetAllFieldNames", CString(), [&](CTRecordset& recordset) {
        CStringArray names;
        recordset.GetAllFieldNames(names);
        return ArrayToString(names, szSeparator);
    });
}

int CTDataClient::GetFieldInfor(const char* szName, _tagFIELDINFO* pInfo) {
    return Inside::OnRecordset(*this, "GetFieldInfor", 0, [&](CTRecordset& recordset) {
        if (recordset.GetFieldInfo(szName, pInfo)) return 1;
        SetLastErrorString(recordset.GetLastErrorString());
        return 0;
    });
}

CString CTDataClient::GetRecordString(const char* szSeparator) {
    return Inside::OnRecordset(*this, "GetRecordString", CString(), [&](CTRecordset& recordset) {
        CStringArray values;
        return recordset.SelectCurRecordToString(values, 0) ? ArrayToString(values, szSeparator) : CString();
    });
}
