// tkkernel/driver.h - late-bound access to a database: connection, recordset, and the fields and properties they hold.
//
//   CTDatabase database;
//   if (!database.Open("stock", "sa", "secret")) return Report(database.GetLastErrorString());
//   CTRecordset orders(&database);
//   if (!orders.OpenSQL("select * from ORDERS", 1)) return Report(orders.GetLastErrorString());
//   for (; !orders.GetEof(); orders.MoveNext()) Show(orders.GetStringValue("CUSTOMER"),
//   orders.GetDoubleValue("AMOUNT"));
//
// Every wrapper drives one automation object of the ADO model through IDispatch; each member is one or a few late-bound
// calls on it.
//
// Failure: a member that does work returns 0, "" or null and leaves the reason in GetLastErrorString(): the failure's
// own text, a line break, and what was being done. A member that passes one ADO member straight through lets the
// framework's exception (COleException*, COleDispatchException*) pass to its caller, who deletes it; so does every
// member of the four collection and item classes.
// Ownership: an IDispatch*, IUnknown* or VARIANT that a member returns is the caller's to release or clear. Arguments
// are borrowed for the call, except the IDispatch* of a constructor, which is taken over.
// Copies: a copy of a wrapper shares its automation object; destroying either closes what both use.
// Text: GBK; a null text argument reaches the object as a null BSTR unless a member says otherwise.
// Threads: one caller at a time for each wrapper; different wrappers need no lock.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <afxcoll.h>
#include <afxdisp.h>

#include "tkkernel/catalog.h"
#include "tkkernel/export.h"

struct IRowAccess;
class CTRecordset;

namespace tk::driver {

struct Guard;

/// The short cut that a recordset object may offer beside IDispatch (row_access.h), asked for once for each object.
class TKKERNEL_API RowShortCut {
public:
    RowShortCut() = default;
    RowShortCut(const RowShortCut&) = delete;
    RowShortCut& operator=(const RowShortCut&) = delete;
    ~RowShortCut() { Forget(); }

    /// @param object  the recordset object of now, or null
    /// @return borrowed until the next call; null when the object offers none
    IRowAccess* Of(IDispatch* object) noexcept { return object == object_ ? rows_ : Ask(object); }

    void Forget() noexcept;

private:
    IRowAccess* Ask(IDispatch* object) noexcept;

    IDispatch* object_ = nullptr;  // whom rows_ was asked of; not a reference, rows_ holds one
    IRowAccess* rows_ = nullptr;
};

}  // namespace tk::driver

/// One provider property of a connection, recordset or field: a holder of an ADO Property.
class TKKERNEL_API CTProperty : public COleDispatchDriver {
public:
    CTProperty();                                    ///< An empty holder.
    CTProperty(IDispatch* pDispatch);                ///< Takes over the reference.
    CTProperty(const CTProperty& other);             ///< Shares the object.
    CTProperty& operator=(const CTProperty& other);  ///< Shares the object.

    VARIANT GetValue();                    ///< Property.Value; the caller clears it.
    void SetValue(const VARIANT& value);   ///< Property.Value
    CString GetName();                     ///< Property.Name
    long GetType();                        ///< Property.Type, an ADO data type code
    long GetAttributes();                  ///< Property.Attributes
    void SetAttributes(long nAttributes);  ///< Property.Attributes
};

/// The provider properties of one object: a holder of an ADO Properties collection.
class TKKERNEL_API CTProperties : public COleDispatchDriver {
public:
    CTProperties();                                      ///< An empty holder.
    CTProperties(IDispatch* pDispatch);                  ///< Takes over the reference.
    CTProperties(const CTProperties& other);             ///< Shares the object.
    CTProperties& operator=(const CTProperties& other);  ///< Shares the object.

    long GetCount();                           ///< Properties.Count
    CTProperty GetItem(const VARIANT& index);  ///< Properties.Item; a number from 0, or a name
};

/// One column of a recordset: a holder of an ADO Field.
class TKKERNEL_API CTField : public COleDispatchDriver {
public:
    CTField();                                 ///< An empty holder.
    CTField(IDispatch* pDispatch);             ///< Takes over the reference.
    CTField(const CTField& other);             ///< Shares the object.
    CTField& operator=(const CTField& other);  ///< Shares the object.

    CTProperties GetProperties();              ///< Field.Properties
    long GetActualSize();                      ///< Field.ActualSize, in bytes
    long GetAttributes();                      ///< Field.Attributes
    void SetAttributes(long nAttributes);      ///< Field.Attributes
    long GetDefinedSize();                     ///< Field.DefinedSize
    void SetDefinedSize(long nSize);           ///< Field.DefinedSize
    CString GetName();                         ///< Field.Name
    long GetType();                            ///< Field.Type, an ADO data type code
    void SetType(long nType);                  ///< Field.Type
    VARIANT GetValue();                        ///< Field.Value; the caller clears it.
    void SetValue(const VARIANT& value);       ///< Field.Value
    void AppendChunk(const VARIANT& data);     ///< Field.AppendChunk
    VARIANT GetChunk(long nLength);            ///< Field.GetChunk; the caller clears it.
    VARIANT GetOriginalValue();                ///< Field.OriginalValue; the caller clears it.
    VARIANT GetUnderlyingValue();              ///< Field.UnderlyingValue; the caller clears it.
    IUnknown* GetDataFormat();                 ///< Field.DataFormat; the caller releases it.
    void SetRefDataFormat(IUnknown* pFormat);  ///< Field.DataFormat, by reference
    long GetStatus();                          ///< Field.Status
    long GetPrecision();                       ///< Field.Precision
    void SetPrecision(long nPrecision);        ///< Field.Precision
    long GetNumericScale();                    ///< Field.NumericScale
    void SetNumericScale(long nScale);         ///< Field.NumericScale
};

/// The columns of a recordset: a holder of an ADO Fields collection.
class TKKERNEL_API CTFields : public COleDispatchDriver {
public:
    CTFields();                                  ///< An empty holder.
    CTFields(IDispatch* pDispatch);              ///< Takes over the reference.
    CTFields(const CTFields& other);             ///< Shares the object.
    CTFields& operator=(const CTFields& other);  ///< Shares the object.

    long GetCount();                        ///< Fields.Count
    void Refresh();                         ///< Fields.Refresh
    CTField GetItem(const VARIANT& index);  ///< Fields.Item; a number from 0, or a name

    /// Fields.Append: defines a column of a recordset that is not open yet.
    void Append(const char* szName, long nType, long nDefinedSize, long nAttributes);
    /// Fields.Append with the value as its fifth argument.
    void Append(const char* szName, long nType, long nDefinedSize, long nAttributes, const VARIANT& value);
    void Delete(const VARIANT& index);  ///< Fields.Delete
    void Update();                      ///< Fields.Update
    void Resync(long nResync);          ///< Fields.Resync
    void CancelUpdate();                ///< Fields.CancelUpdate

    /// Appends the name of every column to the array, which is not emptied first.
    void GetNames(CStringArray& names);
};

/// The common base of CTDatabase and CTRecordset: the automation object, the last-error text, the tag of the database
/// system and the provider properties read so far.
class TKKERNEL_API CTDataDriver {
public:
    CTDataDriver();                      ///< No object, empty tag.
    CTDataDriver(IDispatch* pDispatch);  ///< Takes over the reference; tag "Mic".
    /// Shares the object alone: last-error text and properties start empty, the tag is "Mic".
    CTDataDriver(const CTDataDriver& other);
    CTDataDriver& operator=(const CTDataDriver&) = delete;
    virtual ~CTDataDriver();

    CString GetLastErrorString();  ///< Why the last failing member failed; see the members for what else is left here.
    IDispatch* GetDispatch();      ///< The object, borrowed; null before it is created.

protected:
    /// Creates the automation object, unless one is held already: that one stays.
    /// @param szClsid  a class identifier in braces, or the name of a class
    /// @return 1 with a text that says so in the last-error text, or 0 with the reason there
    int OnInitCLSID(const char* szClsid);

    /// Replaces the property map by the items of an ADO Properties collection.
    /// @param pProperties  borrowed; an address that is not readable leaves the map alone
    /// @return 1 when at least one was read; 0 otherwise; what was read before a failure stays
    int OnInitProperty(IDispatch* pProperties);

    CString GetStandardSQL(const char* szName);  ///< The name between double quotes; nothing inside is escaped.

    /// Formats the last-error text as printf does; null leaves it alone. @return 0
    int SetError(const char* szFormat, ...);

    /// The last-error text becomes both texts with a line break between them. @return 0
    int SetErrorString(const char* szFirst, const char* szSecond);

    /// The last-error text becomes the exception's own text (at most 255 bytes, never half a character), a line break
    /// and the context. The exception stays the caller's. @return 0
    int ThrowException(CException* e, const char* szContext);

    // The order is part of the interface of derived classes.
    COleDispatchDriver dispatch_;
    CString recordText_;
    CString lastError_;
    CString dbmsTag_;
    int initialised_ = 0;
    CMapStringToString properties_;

private:
    friend struct tk::driver::Guard;
};

/// A connection to a database: an ADO Connection, created at the first open.
///
/// The provider properties and the database system's tag are read at every successful open; GetPropertyValue and the
/// questions built on it answer from what was read then, and only while the connection is open.
class TKKERNEL_API CTDatabase : public CTDataDriver {
public:
    CTDatabase();
    CTDatabase(const CTDatabase& other);  ///< Shares the connection; the next open applies the defaults again.
    virtual ~CTDatabase();                ///< Closes the connection, also when a copy still uses it.

    // ---- opening and closing ----------------------------------------------------------------------------------

    /// Asks the user for a connection and opens it.
    /// @return 1, or 0: cancelled, nobody to ask, or not opened
    int Open();

    /// Opens a connection string.
    /// @return 1, or 0 with the reason in GetLastErrorString()
    int Open(const char* szConnection);

    /// Opens an ODBC data source. User and password travel inside the string and beside it.
    /// @return 1, or 0 with the reason in GetLastErrorString()
    int Open(const char* szDsn, const char* szUser, const char* szPassword);

    /// Opens a Jet database file.
    /// @param szUser, szPassword  null stands for "Admin" and for no password
    /// @return 1, or 0 with the reason in GetLastErrorString()
    int OpenDAO(const char* szDataSource, const char* szUser, const char* szPassword);

    void Close();   ///< Closes what is open; a failure is left in GetLastErrorString().
    int IsOpen();   ///< 1 while open; 0 otherwise, also before the object is created.
    void Cancel();  ///< Connection.Cancel

    // ---- transactions: Connection members passed straight through ---------------------------------------------

    long BeginTrans();     ///< @return the nesting level, 1 at the top
    void CommitTrans();    ///< Ends the innermost level and keeps its changes.
    void RollbackTrans();  ///< Ends the innermost level and takes its changes back.

    // ---- statements -------------------------------------------------------------------------------------------
    // Each leaves the system's last error text, or that the database was not opened, in GetLastErrorString() when the
    // connection told nothing about the rows affected.

    /// Runs a statement and drops what it returns.
    /// @return 1 when the connection told the rows affected, else 0
    int ExecuteSQL(const char* szSQL);

    /// ExecuteSQL of a text formatted as printf does; a null format is an empty text.
    int ExecuteEx(const char* szFormat, ...);

    /// Runs a statement formatted as printf does.
    /// @return the number of rows affected; 0 when it failed or is unknown
    long ExecSQL(const char* szFormat, ...);

    /// Runs a query.
    /// @return its recordset, the caller's; or null with the reason in GetLastErrorString()
    IDispatch* GetRecordset(const char* szSQL);

    /// Sends what runs an ADO Command to the Connection: its members 1, 2 (twice) and 5.
    /// @return 1, or 0; at once, with the last-error text as it was, when the connection is not open
    int ExecuteCommand(const char* szText);

    // ---- Connection members passed straight through -----------------------------------------------------------

    CString GetConnectionString();                        ///< Connection.ConnectionString
    void SetConnectionString(const char* szConnection);   ///< Connection.ConnectionString
    long GetCommandTimeout();                             ///< Connection.CommandTimeout, in seconds
    void SetCommandTimeout(long nSeconds);                ///< Connection.CommandTimeout
    void SetCommandText(const char* szText);              ///< Puts a text into member 2, as ExecuteCommand needs it.
    long GetConnectionTimeout();                          ///< Connection.ConnectionTimeout, in seconds
    void SetConnectionTimeout(long nSeconds);             ///< Connection.ConnectionTimeout
    CString GetVersion();                                 ///< Connection.Version
    IDispatch* GetErrors();                               ///< Connection.Errors; the caller releases it.
    CString GetDefaultDatabase();                         ///< Connection.DefaultDatabase
    void SetDefaultDatabase(const char* szDatabase);      ///< Connection.DefaultDatabase
    long GetIsolationLevel();                             ///< Connection.IsolationLevel
    void SetIsolationLevel(long nLevel);                  ///< Connection.IsolationLevel
    long GetAttributes();                                 ///< Connection.Attributes
    void SetAttributes(long nAttributes);                 ///< Connection.Attributes
    long GetCursorLocation();                             ///< Connection.CursorLocation
    void SetCursorLocation(long nLocation);               ///< Connection.CursorLocation
    long GetMode();                                       ///< Connection.Mode
    void SetMode(long nMode);                             ///< Connection.Mode
    CString GetProvider();                                ///< Connection.Provider
    void SetProvider(const char* szProvider);             ///< Connection.Provider
    long GetState();                                      ///< Connection.State; 0 before the object is created.
    void SetRefActiveConnection(IDispatch* pConnection);  ///< Puts member 1 by reference, as ExecuteCommand needs it.

    /// Opens a schema rowset and refreshes the database system's tag. Creates the Connection object if needed.
    /// @return its recordset, the caller's; or null with the reason in GetLastErrorString()
    IDispatch* OpenSchema(long nSchema, const VARIANT& restrictions, const VARIANT& schemaId);
    IDispatch* OpenSchema(long nSchema, const VARIANT& restrictions);  ///< The same without a schema identifier.
    IDispatch* OpenSchema(long nSchema);                               ///< The same without restrictions.

    // ---- questions answered from the property map -------------------------------------------------------------

    /// The text of a provider property.
    /// @param szName  exact, upper and lower case as the provider spells it
    /// @return "" when the connection is not open or has no such property
    CString GetPropertyValue(const char* szName);
    CString GetCurSchema();       ///< Property "User Name"
    CString GetUser();            ///< Property "User ID"
    CString GetPassword();        ///< Property "Password"
    CString GetServer();          ///< Property "Data Source Name"
    CString GetDriverName();      ///< Property "Provider Friendly Name"
    CString GetDatabaseName();    ///< As GetCurDbName.
    CString GetCurDbName();       ///< The catalog (a file's name without its folder), else server, source, "(Unknown)".
    CString GetClient();          ///< This computer's name.
    CString GetConnectionType();  ///< "ODBC" for a connection by data source name, otherwise "ADO".
    CString GetDbmsName();        ///< Property "DBMS Name"
    CString GetDBMS();            ///< The first three characters of "DBMS Name": the database system's tag.

    // ---- schema rowsets ---------------------------------------------------------------------------------------
    // One OpenSchema each, with the names as its restrictions: a null one does not restrict, an empty one does.
    // The caller releases the recordset. Null with the reason in GetLastErrorString(), or, with that text as it was,
    // when the connection is not open.

    /// Tables and views. @param szType  "TABLE", "VIEW", "SYSTEM TABLE" ...
    IDispatch* GetObjectSet(const char* szType, const char* szSchema);
    IDispatch* GetPrimaryKeySet(const char* szTable, const char* szSchema);  ///< The columns of a table's primary key.
    IDispatch* GetForeignKeySet(const char* szTable);  ///< The columns of the foreign keys that a table has.
    IDispatch* GetProcedureSet(const char* szSchema);  ///< Procedures.
    IDispatch* GetFieldSet(const char* szTable, const char* szSchema);  ///< The columns of a table or view.
    IDispatch* GetIndexSet(const char* szTable, const char* szIndex, const char* szSchema);  ///< Columns of indexes.
    IDispatch* GetTypeSet();    ///< The types of the database system.
    IDispatch* GetDbNameSet();  ///< Catalogs.
    IDispatch* GetSchemaSet();  ///< Schemata.

    // ---- lists of what the database holds ---------------------------------------------------------------------
    // In the order of the rowset. Lists are appended to the array, which is not emptied first unless a member says so.
    // @return 1; 0 with the reason in GetLastErrorString(), or, with that text as it was, when the connection is not
    // open

    /// Names of all objects of a type. On Oracle (every type is asked of OBJ there) an empty list is a failure.
    /// @note Without a rowset the reason is the system's last error text, on a closed connection too.
    int GetAllObjects(CStringArray& ar, const char* szType);
    int GetAllTables(CStringArray& ar);  ///< GetAllObjects of "TABLE".
    int GetAllViews(CStringArray& ar);   ///< GetAllObjects of "VIEW".

    CString GetPrimaryKey(const char* szTable);      ///< The key's columns with commas between them; "" without a key.
    CString GetPrimaryKeyName(const char* szTable);  ///< The name of the key's constraint; "" when it has none.

    /// As GetPrimaryKey, asked of DB2's own tables. The names are inserted into the query as they are.
    CString GetDB2PrimaryKey(const char* szTable, const char* szCreator);
    int GetForeignKeyNames(const char* szTable,
                           CStringArray& ar);  ///< Each name once, also with what is there already.
    int GetAllProcedures(CStringArray& ar);    ///< Procedures of the current schema, without the number of "P;1".

    int GetAllFields(const char* szTable, CStringArray& ar);  ///< @return the number of columns appended
    int GetAllIndexes(CStringArray& ar);    ///< GetIndexNames of every table. @return the number of names appended
    int GetTypeNames(CStringArray& ar);     ///< Names of the database system's types.
    int GetAllDatabases(CStringArray& ar);  ///< Names of catalogs; replaces the array.
    int GetSchemas(CStringArray& ar);       ///< Names of schemata, each once, also with what is there already.
    int GetAllSchemas(CStringArray& ar);    ///< The same, and the user's name behind it, whether it is there or not.

    /// @return 1 when a table or a view of that name has a column, else 0
    int IsTableExist(const char* szName);
    int IsViewExist(const char* szName);  ///< As IsTableExist, tables included.

    /// @param szName  "name" in the current schema, or "schema.name", whole, in that schema
    int IsProcedureExist(const char* szName);  ///< @return 1 when there is one, else 0

    /// @param szField  not consulted
    /// @return 1 when the first column of the table takes no nulls, else 0
    int IsFieldNull(const char* szTable, const char* szField);

    // ---- table scripts ----------------------------------------------------------------------------------------

    /// The CREATE TABLE script in the dialect of the database system: columns, defaults, primary key; all in capitals.
    /// @return "" with the reason in GetLastErrorString()
    /// @note Without a tag of a known system, types and defaults are empty.
    CString GetTableStruct(const char* szTable);

    /// Replaces the array by the columns of a table.
    /// @return 1, or 0 with the reason in GetLastErrorString()
    /// @note A column is marked as key when its name occurs anywhere in the text of GetPrimaryKey, ignoring case.
    int GetTableStruct(const char* szTable, CTArray<_tagFIELDINFO, _tagFIELDINFO&>& arFields);

    // ---- table scripts in another dialect ---------------------------------------------------------------------

    /// A table script of this connection's system as one of another system: in capitals, with the type names and
    /// default clauses of the target. A plain text replacement, rule after rule, that spares neither names nor values.
    /// @param szTarget  a tag: "Mic", "MS ", "ADA", "DB2" or "ORA", whatever its case
    /// @return the script in capitals and otherwise as it was, with the reason in GetLastErrorString(), for another
    ///         target; "" with the reason when this connection's own tag is not one of these
    CString VeriFySQLPragramer(const char* szScript, const char* szTarget);

    // ---- index, view and procedure scripts --------------------------------------------------------------------

    /// The columns of an index with commas between them.
    /// @param szSchema  null: any; not consulted on DB2, whose own tables are asked
    /// @return "" with the reason in GetLastErrorString(), or, with that text as it was, when the connection is not
    ///         open; "ERROR!" with the reason when DB2's tables cannot be asked
    CString GetIndex(const char* szTable, const char* szIndex, const char* szSchema);

    /// Appends the names of a table's indexes, that of the primary key left out: each once, also with what is there
    /// already.
    /// @return 1; 0 with the reason in GetLastErrorString(), or, with that text as it was, when the connection is not
    ///         open
    int GetIndexNames(const char* szTable, CStringArray& ar, const char* szSchema);

    /// Appends a CREATE INDEX statement for each of these indexes: all in capitals, without order or uniqueness.
    /// @return 1, also when there is none; 0 with the reason in GetLastErrorString() behind an exception
    int GetIndexesContext(const char* szTable, CStringArray& ar);

    /// The columns of all these indexes, each name in double quotes, with commas between them.
    /// @return "" when there is none, or with the reason in GetLastErrorString() behind an exception
    CString GetAllIndexName(const char* szTable);

    /// The text of a view as the database system keeps it; on Oracle that of the current schema's view.
    /// @return "" with the reason in GetLastErrorString()
    CString GetViewContext(const char* szView);
    CString GetProcedureContext(const char* szProcedure);  ///< The same of a procedure.

    // ---- data maintenance -------------------------------------------------------------------------------------
    // One ExecuteSQL each, whose result they return. Names stand between double quotes as they are given: what nobody
    // vetted does not belong here.

    /// @param szWhere  the condition as it is given; empty, blank or null: every row
    int Delete(const char* szTable, const char* szWhere);
    /// Deletes every row, the fastest way that the database system has.
    /// @note With the tag of an unknown system an empty statement is sent.
    int TruncateTable(const char* szTable);
    int DropTable(const char* szTable);
    int DropView(const char* szView);
    int DropProcedure(const char* szProcedure);

    // ---- lookups ----------------------------------------------------------------------------------------------
    // A query that cannot be opened, or has no row, leaves the last-error text as it was.

    /// @param szTable  not quoted: may bring a schema in front or a condition behind
    /// @return -1 when it is not known, also when the count comes as anything but a 16- or 32-bit integer
    long GetRecordCount(const char* szTable);

    /// One column of the first row.
    /// @return VT_EMPTY when there is none; lent until this thread's next call
    const VARIANT& GetFirstValue(const char* szSQL, long nIndex);
    const VARIANT& GetFirstValue(const char* szSQL, const char* szField);

    /// The display texts of the first row's columns with "|" between them; those of empty values at the end go.
    /// @param szFields  their names with "|" between them; a single one stands for the first column, whatever it says
    /// @return "" without a row; and for every exception, with its place in GetLastErrorString()
    CString GetSpecialValue(const char* szSQL, const char* szFields);

    /// The display texts of every row, each row a line that ends with CR LF.
    /// @param szSeparator  between the texts; its characters at the end of a line go, those of empty values too
    /// @return "" without a row; and for every exception, with its place in GetLastErrorString()
    CString GetRecordValues(const char* szSQL, const char* szSeparator);

    /// Saves the rows in ADO's own binary form, over a file of that name.
    /// @return 1, or 0; the reason is in GetLastErrorString() when it was the saving that failed
    int StoreRecordsetToFile(const char* szSQL, const char* szFile);

    CString GetDbInfor();  ///< "system:server:database", of GetDbmsName, GetServer and GetCurDbName.

protected:
    /// @param szType  "TABLE" or "VIEW", ignoring case; every other type is 0 without a question to the database
    int IsObjectExist(const char* szName, const char* szType);

    /// Creates the Connection object and gives it its defaults, once.
    /// @return 1, or 0 with the reason in GetLastErrorString(); a default that is refused is an exception
    int OnInitDispatch();

    /// The one road to an open connection. @return 1, or 0 with the reason in GetLastErrorString()
    int OnInvoke(const char* szConnection, const char* szUser, const char* szPassword, long nOptions);

    /// Connection.Execute; lets the exception pass.
    /// @param pRecordsAffected  initialised by the caller, emptied before the call; null when nobody asks
    /// @return the recordset, the caller's; may be null
    IDispatch* OnExecute(const char* szSQL, VARIANT* pRecordsAffected, long nOptions);

    /// Calls member 5 with one number; lets the exception pass. @return the caller's
    IDispatch* OnExecute(long nValue);

    // What VeriFySQLPragramer does for each source system, whatever this connection's tag is.
    CString VeriFySQLServerPragramer(const char* szScript, const char* szTarget);
    CString VeriFySybasePragramer(const char* szScript, const char* szTarget);
    CString VeriFyDB2Pragramer(const char* szScript, const char* szTarget);
    CString VeriFyOraclePragramer(const char* szScript, const char* szTarget);

    /// The body of a thread that copies rows of a recordset into a list, as many rows as it has fields, and posts
    /// message 1224 for each.
    /// @param pParam  five members: DWORD the thread to notify, CStringList* for the rows, CString* for the field
    /// names,
    ///        IDispatch* the recordset, CTDatabase* whose connection it has; all outlive the thread, and nobody else
    ///        touches the list meanwhile
    /// @return 0
    static unsigned int OnDataMove(void* pParam);

private:
    COleVariant RunStatement(const char* szSQL);
    void ReportNoRows();
    IDispatch* SchemaRowset(const char* context, const BYTE* parms, long nSchema, const VARIANT* restrictions,
                            const VARIANT* schemaId);

    int ShowRowset(CTRecordset& records, IDispatch* rowset);
    int ShowColumns(CTRecordset& columns, const char* szTable);
    int ListColumn(IDispatch* rowset, const char* szColumn, CStringArray& ar);
    int ListDistinct(IDispatch* rowset, const char* szColumn, CStringArray& ar);
    int ListOracleObjects(CStringArray& ar, const char* szType);
    int HasRows(IDispatch* rowset);

    CString IndexColumns(const char* szTable, const char* szIndex, const char* szSchema);
    CString RowsetIndexColumns(IDispatch* rowset);
    CString Db2IndexColumns(const char* szTable, const char* szIndex);
    int ListIndexes(const char* szTable, CStringArray& ar, const char* szSchema);
    CString SourceText(const CString& sql);
};

/// Records of a table, query or procedure: an ADO Recordset that opens against a remembered connection string.
///
/// Every open makes its own connection from that string. A recordset bound to a data source object needs none.
class TKKERNEL_API CTRecordset : public CTDataDriver {
public:
    CTRecordset();                          ///< Not bound; no object yet.
    CTRecordset(CTDatabase* pDatabase);     ///< Bound to the database, as OpenDatabase does.
    CTRecordset(const CTRecordset& other);  ///< Shares the Recordset object; not bound.
    CTRecordset(IDispatch* pDispatch);      ///< Takes over a Recordset; a null one is replaced by a new object.
    virtual ~CTRecordset();                 ///< Closes the recordset, also when a copy still uses it.

    // ---- binding to a database --------------------------------------------------------------------------------

    /// Takes over the connection string and the tag of a database. @return 1, or 0 with the reason
    int OpenDatabase(CTDatabase* pDatabase);

    /// @param szDbms  the tag, kept whole; null or empty: the connection is opened once to ask for it
    /// @return 1, or 0 with the reason in GetLastErrorString()
    int OpenDatabase(const char* szConnection, const char* szDbms);

    /// Binds to an ODBC data source, which is opened once to ask for its tag. @return 1, or 0 with the reason
    int OpenDatabase(const char* szDsn, const char* szUser, const char* szPassword);

    /// Forgets connection string and tag. @return what Close returns
    int CloseDatabase();

    // ---- opening and closing ----------------------------------------------------------------------------------
    // Forward-only and read-only when bReadOnly is not 0, else dynamic and optimistic. An open recordset is closed
    // first. After a success the last-error text says that there was no failure and no result set, whatever came back.

    int OpenTable(const char* szTable, int bReadOnly);          ///< @return 1, or 0 with the reason
    int OpenSQL(const char* szSQL, int bReadOnly);              ///< @return 1, or 0 with the reason
    int OpenProcedure(const char* szProcedure, int bReadOnly);  ///< @return 1, or 0 with the reason

    /// Shows the rows of another recordset object, borrowed for the call. @return 1, or 0 with the reason
    int OpenDispatch(IDispatch* pSource);
    int OpenField(IDispatch* pSource);  ///< As OpenDispatch.

    /// Recordset.DataSource by reference; lets the exception pass.
    /// @return 1, or 0 when the address is not readable
    int SetRefDataSource(IUnknown* pSource);
    int SetDispatch(IUnknown* pSource);  ///< As SetRefDataSource.

    int Close();                       ///< Empties the last-error text. @return 1, or 0 with the reason
    int Requery();                     ///< Recordset.Requery(1). @return 1, or 0 with the reason
    CString GetDBMS();                 ///< The database system's tag.
    void SetDBMS(const char* szDbms);  ///< Keeps the first three characters.
    long GetRecordCount();             ///< Recordset.RecordCount; -1 with the reason when that fails.

    // ---- Recordset members passed straight through ------------------------------------------------------------

    CTProperties GetProperties();                         ///< Recordset.Properties
    long GetAbsolutePosition();                           ///< From 1; negative: unknown, before or after the rows.
    void SetAbsolutePosition(long nPosition);             ///< Recordset.AbsolutePosition
    void SetRefActiveConnection(IDispatch* pConnection);  ///< Recordset.ActiveConnection, by reference
    void SetActiveConnection(const VARIANT& connection);  ///< Recordset.ActiveConnection
    VARIANT GetActiveConnection();                        ///< Recordset.ActiveConnection; the caller clears it.
    int GetBof();                                         ///< Not 0 before the first record.
    VARIANT GetBookmark();                                ///< Recordset.Bookmark; the caller clears it.
    void SetBookmark(const VARIANT& bookmark);            ///< Recordset.Bookmark
    long GetCacheSize();                                  ///< Recordset.CacheSize
    void SetCacheSize(long nSize);                        ///< Recordset.CacheSize
    long GetCursorType();                                 ///< Recordset.CursorType
    void SetCursorType(long nType);                       ///< Recordset.CursorType
    int GetEof();                                         ///< Not 0 after the last record.
    CTFields GetFields();                                 ///< Recordset.Fields
    long GetLockType();                                   ///< Recordset.LockType
    void SetLockType(long nType);                         ///< Recordset.LockType
    long GetMaxRecords();                                 ///< Recordset.MaxRecords
    void SetMaxRecords(long nRecords);                    ///< Recordset.MaxRecords
    void SetRefSource(IDispatch* pSource);                ///< Recordset.Source, by reference
    void SetSource(const char* szSource);                 ///< Recordset.Source
    VARIANT GetSource();                                  ///< Recordset.Source; the caller clears it.
    void CancelUpdate();                                  ///< Recordset.CancelUpdate
    void Delete();                                        ///< Recordset.Delete of the current record
    void Delete(long nAffect);                            ///< Recordset.Delete
    VARIANT GetRows(long nRows, const VARIANT& start, const VARIANT& fields);  ///< The caller clears it.
    void Move(long nCount, const VARIANT& start);                              ///< Recordset.Move
    void MoveNext();                                                           ///< Recordset.MoveNext
    void MovePrevious();                                                       ///< Recordset.MovePrevious
    void MoveFirst();                                                          ///< Recordset.MoveFirst
    void MoveLast();                                                           ///< Recordset.MoveLast
    void Requery(long nOptions);                                               ///< Recordset.Requery
    void Update();                                                             ///< Recordset.Update
    void Update(const VARIANT& fields, const VARIANT& values);                 ///< Recordset.Update
    long GetAbsolutePage();                  ///< From 1; negative: unknown, before or after the rows.
    void SetAbsolutePage(long nPage);        ///< Recordset.AbsolutePage
    long GetEditMode();                      ///< Recordset.EditMode
    long GetPageCount();                     ///< Recordset.PageCount
    long GetPageSize();                      ///< Recordset.PageSize, in records
    void SetPageSize(long nSize);            ///< Recordset.PageSize
    CString GetSort();                       ///< Recordset.Sort
    void SetSort(const char* szSort);        ///< Recordset.Sort
    long GetStatus();                        ///< Recordset.Status
    long GetState();                         ///< Recordset.State; 0 before the object is created.
    void UpdateBatch();                      ///< Recordset.UpdateBatch of all records
    void UpdateBatch(long nAffect);          ///< Recordset.UpdateBatch
    void CancelBatch(long nAffect);          ///< Recordset.CancelBatch
    long GetCursorLocation();                ///< Recordset.CursorLocation
    void SetCursorLocation(long nLocation);  ///< Recordset.CursorLocation

    /// Recordset.NextRecordset.
    /// @param pAffected  receives the rows affected; null when nobody asks
    /// @return the next result; after the last one a recordset that is not open
    CTRecordset NextRecordset(VARIANT* pAffected);

    int Supports(long nOption);             ///< Not 0 when every option of the mask is supported.
    long GetMarshalOptions();               ///< Recordset.MarshalOptions
    void SetMarshalOptions(long nOptions);  ///< Recordset.MarshalOptions
    void Find(const char* szCriteria, long nSkip, long nDirection, const VARIANT& start);  ///< Recordset.Find
    void Cancel();                                                                         ///< Recordset.Cancel
    IUnknown* GetDataSource();      ///< Recordset.DataSource; the caller releases it.
    IDispatch* GetActiveCommand();  ///< Recordset.ActiveCommand; the caller releases it.
    void SetStayInSync(int bStay);  ///< Recordset.StayInSync
    int GetStayInSync();            ///< Recordset.StayInSync

    /// Recordset.GetString: the rows from the current one on as one text. Null texts are TAB, CR and the empty one.
    CString GetString(long nFormat, long nRows, const char* szColumn, const char* szRow, const char* szNull);
    CString GetDataMember();                                             ///< Recordset.DataMember
    void SetDataMember(const char* szMember);                            ///< Recordset.DataMember
    long CompareBookmarks(const VARIANT& first, const VARIANT& second);  ///< 0 less, 1 equal, 2 greater
    CTRecordset Clone(long nLockType);                                   ///< Another position on the same rows.
    void Resync(long nAffect, long nResync);                             ///< Recordset.Resync
    void Seek(const VARIANT& keys, long nOption);                        ///< Recordset.Seek
    void SetIndex(const char* szIndex);                                  ///< Recordset.Index
    CString GetIndex();                                                  ///< Recordset.Index
    void Save(const VARIANT& destination, long nFormat);                 ///< Recordset.Save

    // ---- navigation and search --------------------------------------------------------------------------------

    /// @param nStart  0 the current record, 1 the first, 2 the last
    /// @return 1, or 0 with the reason in GetLastErrorString()
    int Move(long nCount, short nStart);

    /// Searches forward from the current record on. @return 1 when a search was made; ask GetEof() for a match
    int Find(const char* szCriteria);
    int FindFirst(const char* szCriteria);  ///< Find from the first record on; 0 at once at either end of the records.
    int FindNext(const char* szCriteria);   ///< Find behind the current record; 0 at once at either end of the records.
    int SetFilter(const char* szFilter);    ///< @return 1, or 0 with the reason in GetLastErrorString()
    CString GetFilter();                    ///< @return "" when there is none, or with the reason

    // ---- values of the current record -------------------------------------------------------------------------
    // A field is named by its name, by its number from 0, or by a VARIANT that holds either. A read that fails gives
    // an empty VARIANT, hence the default of the typed getters, with the reason in GetLastErrorString().

    VARIANT GetValue(const char* szName);              ///< The caller clears it.
    VARIANT GetValue(long nIndex);                     ///< The caller clears it.
    VARIANT GetValue(VARIANT key);                     ///< The caller clears it, and the key as well.
    void SetValue(const char* szName, VARIANT value);  ///< The value stays the caller's.
    void SetValue(long nIndex, VARIANT value);         ///< The value stays the caller's.
    void SetValue(VARIANT key, VARIANT value);         ///< Key and value stay the caller's.

    CString GetStringValue(const char* szName);  ///< The display text, as VariantToString makes it.
    CString GetStringValue(long nIndex);
    CString GetStringValueStr(const char* szName);  ///< The SQL literal, as VARIANTToString makes it.
    CString GetStringValueStr(long nIndex);

    /// I4, R4, R8, texts and decimals; every other type, I2 and currency among them, is 0.0.
    double GetDoubleValue(const char* szName);
    double GetDoubleValue(long nIndex);

    /// I2, I4, UI2, UI4, booleans and decimals; every other type, texts and reals among them, is 0.
    int GetIntValue(const char* szName);
    int GetIntValue(long nIndex);

    char GetCharValue(const char* szName);  ///< The first byte of a text; 0 for every other type.
    char GetCharValue(long nIndex);
    DATE GetDateValue(const char* szName);  ///< A date; 0.0 for every other type.
    DATE GetDateValue(long nIndex);

    // ---- fields and properties --------------------------------------------------------------------------------
    // These let exceptions pass, except where a result for a failure is named.

    int GetFieldIndex(const char* szName);         ///< From 0, ignoring case; -1 when there is none.
    CTField GetField(const char* szName);          ///< Fields.Item
    long GetFieldCount();                          ///< Fields.Count
    CString GetFieldName(long nIndex);             ///< Fields.Item.Name
    long GetFieldType(VARIANT key);                ///< Fields.Item.Type; the key stays the caller's.
    IDispatch* GetProperty();                      ///< Recordset.Properties; the caller releases it.
    CString GetPropertyValue(const char* szName);  ///< The text of a provider property; "" when closed or failed.

    /// Appends the COLUMN_NAME of every record of a schema rowset. @return the records visited; 0 with the reason
    int GetFieldNames(CStringArray& names);
    int GetAllFieldNames(
        CStringArray& names);              ///< Replaces the array. @return the number of columns; 0 with the reason
    int GetAllFieldNames(CString& names);  ///< The same as one text, separated by commas.

    // ---- export ----------------------------------------------------------------------------------------------
    // Display texts are those of GetStringValue, literals those of GetStringValueStr. Where separators are cut off the
    // end of a text, all of them are: those of empty values in the last fields, and every character of the separator.

    /// Recordset.Save as XML. A file of that name is deleted first.
    /// @param bAskOverwrite  not 0: asks the user before an existing file is deleted
    /// @return 1, or 0: the user said no, or the reason stands in GetLastErrorString()
    int SaveAsXML(const char* szPath, int bAskOverwrite);
    int SaveAsFile(const char* szPath, int bAskOverwrite);  ///< The same in ADO's own binary form.

    CString GetNullString(long nIndex);  ///< " NOT NULL" of a field that takes no nulls, else ""; lets exceptions pass.

    /// Appends the display text of one field of every record to the array, which is not emptied first. Reads from the
    /// first record on and stays behind the last one.
    /// @return the records read; 0 with the reason in GetLastErrorString()
    int SelectOneColumn(long nIndex, CStringArray& values);
    int SelectOneColumn(const char* szName, CStringArray& values);

    /// The literals of the current record with the separator between them.
    /// @return "" behind the last record, or with the reason in GetLastErrorString()
    CString GetCurRecordToString(const char* szSeparator);

    /// Replaces the array by the texts of the current record.
    /// @param bUseStr  not 0: literals; 0: display texts
    /// @return 1; 0 behind the last record (the array stays), without fields, or with the reason
    int SelectCurRecordToString(CStringArray& values, int bUseStr);
    int SelectCurRecordToTrimString(CStringArray& values);  ///< The same with display texts without outer blanks.

    /// Goes to the first record and gives its texts with the separator between them. With SelectNextRecordToString
    /// until that returns 0 it walks every record.
    /// @param nCount  fields wanted, the first ones; a field that does not exist has an empty text
    /// @return 1; 0 with an empty text behind the last record, or with the reason in GetLastErrorString()
    int SelectFirstRecordToString(long nCount, CString& text, const char* szSeparator, int bUseStr);
    /// Goes to the next record. @return as above
    int SelectNextRecordToString(long nCount, CString& text, const char* szSeparator, int bUseStr);

    /// Sets the filter and deletes every record that it shows; an empty criterion shows them all. The filter stays.
    /// @return the records deleted; 0 when there is none, or with the reason in GetLastErrorString(); nothing is
    ///         deleted when the filter is refused; -1, with nothing deleted, when the object does not know how many
    ///         there are
    int Delete(const char* szCriteria);

    // ---- column types and field descriptions ------------------------------------------------------------------
    // In the dialect that GetDBMS() names. A tag that names none gives "", and the last-error text says so.

    /// The type of a column as CREATE TABLE spells it, "VARCHAR (20)".
    /// @param nType            an ADO data type code
    /// @param nLong, nFixed    the column's flags (COLUMN_FLAGS) and 0x80 and 0x10
    /// @return "UNKNOWN" for a code that the database system has no type for
    CString GetFieldTypeStr(long nType, int nSize, int nPrecision, int nScale, int nLong, int nFixed);

    /// The DEFAULT clause of a column, a tab in front of it. @return "" for a column without a default
    CString FieldDefaultValue(int bHasDefault, const char* szDefault);

    // The rest needs a recordset that shows the columns of a table (CTDatabase::GetFieldSet, OpenField).

    /// Describes the column of the current row. Texts beyond 63 bytes are cut behind a whole character; the key mark
    /// stays as it is.
    /// @return 1; 0 behind the last row, or with the reason in GetLastErrorString()
    int GetFieldInfoCurrent(_tagFIELDINFO* pInfo);
    int GetFieldInfo(long nIndex, _tagFIELDINFO* pInfo);         ///< Goes to the row of that number, from 0.
    int GetFieldInfo(const char* szName, _tagFIELDINFO* pInfo);  ///< Goes to the row of that column, in its own case.

    /// The columns as lines of a CREATE TABLE script, each in front of a comma but the last.
    /// @return "" without rows, or with the reason in GetLastErrorString()
    CString GetFieldsStruct();

protected:
    int OnInitDispatch();  ///< Creates the Recordset object, once. @return 1, or 0 with the reason
    int IsOpen();          ///< 1 while open; 0 otherwise, also when the state cannot be read.

    /// Opens against the remembered connection string. @return 1, or 0 with the reason in GetLastErrorString()
    int OnInvoke(const char* szSource, long nCursorType, long nLockType, long nOptions);

    /// Recordset.Open, then CacheSize 1000. @return 1, or 0 with the reason in GetLastErrorString()
    int SetRecordset(const VARIANT& source, const VARIANT& activeConnection, long nCursorType, long nLockType,
                     long nOptions);
    int SetRecordset(const VARIANT& source);  ///< The same with the source alone.
    /// The same, sent by position: the numbers arrive as ActiveConnection, CursorType and LockType.
    int SetRecordset(const VARIANT& source, long nCursorType, long nLockType, long nOptions);

    // GetFieldTypeStr in one dialect, whatever the tag.
    CString GetSQLFieldType(long nType, int nSize, int nPrecision, int nScale, int nLong, int nFixed);
    CString GetDB2FieldType(long nType, int nSize, int nPrecision, int nScale, int nLong, int nFixed);
    CString GetORACLEFieldType(long nType, int nSize, int nPrecision, int nScale, int nLong, int nFixed);
    CString GetSYBASEFieldType(long nType, int nSize, int nPrecision, int nScale, int nLong, int nFixed);

private:
    int BindThrough(CTDatabase& opened, int isOpen);
    VARIANT ReadField(const VARIANT& key);
    CString FieldText(long nIndex, int bUseStr);
    void JoinFields(long nCount, CString& text, const CString& separator, int bUseStr);

    CString connection_;
    int rowLength_ = 0;  // of the last record's text, in bytes
    tk::driver::RowShortCut rows_;
};
