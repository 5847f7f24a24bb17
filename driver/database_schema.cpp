#include "driver/guard.h"
#include "driver/ids.h"
#include "driver/invoke.h"
#include "driver/messages.h"

using namespace tk::driver;

IDispatch* CTDatabase::OpenSchema(long nSchema, const VARIANT& restrictions, const VARIANT& schemaId) {
    static constexpr BYTE parms[] = VTS_I4 VTS_VARIANT VTS_VARIANT;
    return SchemaRowset(kOpenSchemaFailed, parms, nSchema, &restrictions, &schemaId);
}

IDispatch* CTDatabase::OpenSchema(long nSchema, const VARIANT& restrictions) {
    static constexpr BYTE parms[] = VTS_I4 VTS_VARIANT;
    return SchemaRowset(kOpenSchemaFailed, parms, nSchema, &restrictions, nullptr);
}

IDispatch* CTDatabase::OpenSchema(long nSchema) {
    static constexpr BYTE parms[] = VTS_I4;
    return SchemaRowset(kOpenSchemaFailedShort, parms, nSchema, nullptr, nullptr);
}

/// @param parms  tells which of the two values are sent
IDispatch* CTDatabase::SchemaRowset(const char* context, const BYTE* parms, long nSchema, const VARIANT* restrictions,
                                    const VARIANT* schemaId) {
    return Guard::Run(*this, context, static_cast<IDispatch*>(nullptr), [&]() -> IDispatch* {
        // A copy holds the object of another connection, which may be open and refuse its defaults then.
        if (dispatch_.m_lpDispatch == nullptr && !OnInitDispatch()) return nullptr;
        COleDispatchDriver rowset(
            CallForObject(dispatch_, connection::kOpenSchema, parms, nSchema, restrictions, schemaId));
        dbmsTag_ = GetDBMS();
        return rowset.DetachDispatch();
    });
}
