#include <gtest/gtest.h>

#include <cstring>

#include "ado/error.h"
#include "ado/odbc/connection_string.h"
#include "ado/odbc/odbc_api.h"

namespace tk::ado {
namespace {

TEST(TakeLockTime, LeavesTheDriverAMomentAndGivesTheRest) {
    const struct {
        const char* label;
        const char* text;
        int rest;
        std::string_view timeout;
    } rows[] = {
        {"as given", "Driver=SQLite3;Timeout=5000", 4900, "100"},
        {"a moment", "Driver=SQLite3;Timeout=100", 0, "100"},
        {"none", "Driver=SQLite3;Timeout=0", 0, "0"},
        {"no number", "Driver=SQLite3;Timeout=x", 0, "x"},
        {"left to the driver", "Driver=SQLite3", 0, ""},
        {"another driver", "Driver={PostgreSQL Unicode};Timeout=5000", 0, "5000"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        ConnectionString odbc = ConnectionString::Parse(row.text);
        EXPECT_EQ(TakeLockTime(odbc), row.rest);
        EXPECT_EQ(odbc.Get({"Timeout"}), row.timeout);
    }
}

// The machine's drivers and data sources, as these tests want them.
struct Listed {
    const char* name;
    const char* more;
};
const Listed* drivers = nullptr;
std::size_t driverCount = 0;
constexpr Listed kDataSources[] = {{"stock", "SQLite3"}, {"sales", "PostgreSQL Unicode"}, {"ledger", "IBM DB2 ODBC"}};

SQLRETURN Give(const Listed* list, std::size_t count, std::size_t& at, SQLUSMALLINT direction, SQLCHAR* name,
               SQLCHAR* more, SQLSMALLINT* nameLength, SQLSMALLINT* moreLength) {
    if (direction == SQL_FETCH_FIRST) at = 0;
    if (at >= count) return SQL_NO_DATA;
    std::strcpy(reinterpret_cast<char*>(name), list[at].name);
    std::strcpy(reinterpret_cast<char*>(more), list[at].more);
    *nameLength = static_cast<SQLSMALLINT>(std::strlen(list[at].name));
    *moreLength = static_cast<SQLSMALLINT>(std::strlen(list[at].more));
    ++at;
    return SQL_SUCCESS;
}

SQLRETURN ListDrivers(SQLHENV, SQLUSMALLINT direction, SQLCHAR* name, SQLSMALLINT, SQLSMALLINT* nameLength,
                      SQLCHAR* attributes, SQLSMALLINT, SQLSMALLINT* attributesLength) {
    static std::size_t at = 0;
    return Give(drivers, driverCount, at, direction, name, attributes, nameLength, attributesLength);
}

SQLRETURN ListDataSources(SQLHENV, SQLUSMALLINT direction, SQLCHAR* name, SQLSMALLINT, SQLSMALLINT* nameLength,
                          SQLCHAR* driver, SQLSMALLINT, SQLSMALLINT* driverLength) {
    static std::size_t at = 0;
    return Give(kDataSources, std::size(kDataSources), at, direction, name, driver, nameLength, driverLength);
}

class ProviderMap : public testing::Test {
protected:
    static constexpr Listed kDebian[] = {
        {"SQLite3", "Driver=libsqlite3odbc.so"},
        {"PostgreSQL Unicode", "Driver=psqlodbcw.so"},
        {"PostgreSQL ANSI", "Driver=psqlodbca.so"},
        {"MariaDB Unicode", "Driver=libmaodbc.so"},
        {"FreeTDS", "Driver=libtdsodbc.so"},
        {"MDBTools", "Driver=libmdbodbc.so"},
        {"My Company", "Driver=/opt/libsqlite3odbc.so"},
    };

    ProviderMap() : former_(SetOdbcForTest(table_)) {
        table_.Drivers = &ListDrivers;
        table_.DataSources = &ListDataSources;
        Install(kDebian);
    }
    ~ProviderMap() override { SetOdbcForTest(former_); }

    template <std::size_t Count>
    static void Install(const Listed (&list)[Count]) {
        drivers = list;
        driverCount = Count;
    }

    static std::string Odbc(std::string_view given, std::string_view user = {}, std::string_view password = {}) {
        return Resolve(ConnectionString::Parse(given), user, password).odbc.ToOdbc();
    }

    static HRESULT Failure(std::string_view given) {
        try {
            Odbc(given);
            return S_OK;
        } catch (const AdoError& error) {
            return error.Code();
        }
    }

private:
    OdbcApi table_;
    const OdbcApi& former_;
};

TEST_F(ProviderMap, TurnsConnectionStringsIntoThoseOfDrivers) {
    const struct {
        const char* label;
        const char* given;
        const char* odbc;
    } rows[] = {
        {"driver", "Driver=SQLite3;Database=/d/s.db", "Driver=SQLite3;Database=/d/s.db;Timeout=5000;"},
        {"the user's own time-out", "Driver=SQLite3;Database=/d/s.db;timeout=9",
         "Driver=SQLite3;Database=/d/s.db;timeout=9;"},
        {"a file knows no users", "Driver=SQLite3;Database=/d/s.db;UID=sa;PWD=x",
         "Driver=SQLite3;Database=/d/s.db;Timeout=5000;"},
        {"driver known by its library", "Driver=My Company;Database=/d/s.db",
         "Driver={My Company};Database=/d/s.db;Timeout=5000;"},
        {"driver stands first", "UID=sa;Driver=FreeTDS;Server=h",
         "Driver=FreeTDS;UID=sa;Server=h;TDS_Version=7.4;ClientCharset=UTF-8;"},
        {"data source", "DSN=stock", "DSN=stock;"},
        {"data source by property", "Provider=MSDASQL.1;Data Source=sales;User ID=sa;Password=x;Initial Catalog=c",
         "DSN=sales;DATABASE=c;UID=sa;PWD=x;"},
        {"our own words stay here",
         "Provider=MSDASQL;DSN=sales;Persist Security Info=False;DBMS Name=Oracle;OLE DB Services=-2;Mode=3;"
         "Connect Timeout=5;Locale Identifier=2052",
         "DSN=sales;"},
        {"extended properties", "Provider=MSDASQL;Extended Properties=\"DSN=sales;UID=a;PWD=b\"",
         "DSN=sales;UID=a;PWD=b;"},
        {"the string counts before the extended properties",
         "Provider=MSDASQL;User ID=me;Extended Properties=\"DSN=sales;UID=a\"", "DSN=sales;UID=me;"},
        {"empty extended properties", "DSN=sales;Extended Properties=\"\";J", "DSN=sales;"},
        {"SQL Server", "Provider=SQLOLEDB.1;Data Source=db1;Initial Catalog=stock;User ID=sa;Password=x",
         "Driver=FreeTDS;Server=db1;Port=1433;Database=stock;TDS_Version=7.4;ClientCharset=UTF-8;UID=sa;PWD=x;"},
        {"SQL Server with a port", "Provider=SQLNCLI11;Server=db1,1533;Database=stock;UID=sa;PWD=x",
         "Driver=FreeTDS;Server=db1;Port=1533;Database=stock;TDS_Version=7.4;ClientCharset=UTF-8;UID=sa;PWD=x;"},
        {"SQL Server instance", "Provider=MSOLEDBSQL19;Data Source=db1\\two",
         "Driver=FreeTDS;Server=db1\\two;TDS_Version=7.4;ClientCharset=UTF-8;"},
        {"SQL Server, trusted", "Provider=SQLOLEDB;Data Source=db1;Integrated Security=SSPI;Application Name=a",
         "Driver=FreeTDS;Server=db1;Port=1433;Trusted_Connection=yes;APP=a;TDS_Version=7.4;ClientCharset=UTF-8;"},
        {"SQL Server, own version", "Provider=SQLOLEDB;Data Source=db1;TDS_Version=7.1",
         "Driver=FreeTDS;Server=db1;Port=1433;TDS_Version=7.1;ClientCharset=UTF-8;"},
        {"Sybase", "Provider=ASEOLEDB;Data Source=db1:5001;Initial Catalog=s",
         "Driver=FreeTDS;Server=db1;Port=5001;Database=s;TDS_Version=5.0;ClientCharset=UTF-8;"},
        {"Sybase, port apart", "Provider=Sybase.ASEOLEDBProvider.2;Server=db1;Server Port=5002",
         "Driver=FreeTDS;Server=db1;Port=5002;TDS_Version=5.0;ClientCharset=UTF-8;"},
        {"Jet", "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=/d/a.mdb;Jet OLEDB:Database Password=x;User ID=Admin",
         "Driver=MDBTools;DBQ=/d/a.mdb;"},
        {"Jet 3", "Provider=Microsoft.Jet.OLEDB.3.51;Data Source=/d/a.mdb", "Driver=MDBTools;DBQ=/d/a.mdb;"},
        {"ACE", "Provider=Microsoft.ACE.OLEDB.12.0;Data Source=/d/a.accdb", "Driver=MDBTools;DBQ=/d/a.accdb;"},
        {"PostgreSQL", "Provider=PGNP.1;Data Source=db1;Initial Catalog=s;User ID=u;Password=p;sslmode=require",
         "Driver={PostgreSQL Unicode};Server=db1;Port=5432;Database=s;BoolsAsChar=0;sslmode=require;UID=u;PWD=p;"
         "MaxVarcharSize=4000;ByteaAsLongVarBinary=1;CommLog=0;Debug=0;"},
        {"MariaDB", "Provider=MySQLProv;Data Source=db1;Initial Catalog=s",
         "Driver={MariaDB Unicode};Server=db1;Port=3306;Database=s;"
         "INITSTMT={SET sql_mode=CONCAT(@@sql_mode,',ANSI_QUOTES')};OPTION=2;"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(Odbc(row.given), row.odbc);
    }
}

TEST_F(ProviderMap, TakesUserAndPasswordOfTheCall) {
    EXPECT_EQ(Odbc("DSN=sales;UID=a;PWD=b", "me", "mine"), "DSN=sales;UID=me;PWD=mine;");
    EXPECT_EQ(Odbc("DSN=sales;User=a", "", ""), "DSN=sales;UID=a;");
    EXPECT_EQ(Odbc("DSN=stock", "sa", ""), "DSN=stock;");
}

TEST_F(ProviderMap, RefusesProvidersWithoutADriver) {
    constexpr HRESULT kNotFound = static_cast<HRESULT>(0x800A0E7A);
    EXPECT_EQ(Failure("Provider=Nonsense;Data Source=x"), kNotFound);
    EXPECT_EQ(Failure("Provider=MSDAORA;Data Source=orcl"), kNotFound);
    EXPECT_EQ(Failure("Provider=OraOLEDB.Oracle.1;Data Source=orcl"), kNotFound);
    EXPECT_EQ(Failure("Provider=IBMDADB2;Data Source=sample"), kNotFound);
    EXPECT_EQ(Failure("Provider=SQLOLEDBX;Data Source=x"), kNotFound);
    EXPECT_EQ(Failure("Provider=SQLOLEDB;File Name=x.udl"), static_cast<HRESULT>(0x800A0BB9));
}

TEST_F(ProviderMap, PrefersTheMakersOwnDriver) {
    static constexpr Listed kMakers[] = {
        {"FreeTDS", ""}, {"ODBC Driver 18 for SQL Server", ""}, {"Oracle 19 ODBC driver", ""}, {"IBM DB2 ODBC", ""}};
    Install(kMakers);
    EXPECT_EQ(Odbc("Provider=SQLOLEDB;Data Source=db1,1433;Initial Catalog=s"),
              "Driver={ODBC Driver 18 for SQL Server};Server=db1,1433;Database=s;");
    EXPECT_EQ(Odbc("Provider=MSDAORA;Data Source=orcl;User ID=scott;Password=tiger"),
              "Driver={Oracle 19 ODBC driver};DBQ=orcl;UID=scott;PWD=tiger;");
}

TEST_F(ProviderMap, TellsDb2DatabasesFromDataSources) {
    static constexpr Listed kDb2[] = {{"IBM DB2 ODBC", ""}};
    Install(kDb2);
    EXPECT_EQ(Odbc("Provider=IBMDADB2;Data Source=sample;Location=db1:50000;User ID=u"),
              "Driver={IBM DB2 ODBC};Database=sample;Hostname=db1;Port=50000;Protocol=TCPIP;UID=u;");
    EXPECT_EQ(Odbc("Provider=DB2OLEDB;Data Source=ledger"), "DSN=ledger;");
}

TEST_F(ProviderMap, KnowsThePersistedFile) {
    EXPECT_TRUE(Resolve(ConnectionString::Parse("Provider=MSPersist"), "", "").isPersistedFile);
    EXPECT_FALSE(Resolve(ConnectionString::Parse("DSN=sales"), "", "").isPersistedFile);
}

TEST_F(ProviderMap, FindsTheNameInsideTheExtendedProperties) {
    const auto resolved =
        Resolve(ConnectionString::Parse("Extended Properties='DSN=sales;DBMS Name=Oracle'"), "me", "");
    EXPECT_EQ(resolved.properties.dbmsName, "Oracle");
    EXPECT_EQ(resolved.properties.userId, "me");
    EXPECT_EQ(resolved.odbc.ToOdbc(), "DSN=sales;UID=me;");
}

TEST_F(ProviderMap, GivesTheLoginTimeToDriversThatIgnoreTheAttribute) {
    auto resolved = Resolve(ConnectionString::Parse("Driver=MariaDB Unicode;Server=h"), "", "");
    AddLoginTimeout(resolved.odbc, 15);
    EXPECT_EQ(resolved.odbc.ToOdbc(), "Driver={MariaDB Unicode};Server=h;OPTION=2;CONN_TIMEOUT=15;");
    resolved = Resolve(ConnectionString::Parse("Driver=MariaDB Unicode;CONN_TIMEOUT=3"), "", "");
    AddLoginTimeout(resolved.odbc, 15);
    EXPECT_EQ(resolved.odbc.Get({"CONN_TIMEOUT"}), "3");
    resolved = Resolve(ConnectionString::Parse("Driver=PostgreSQL Unicode"), "", "");
    AddLoginTimeout(resolved.odbc, 15);
    EXPECT_EQ(resolved.odbc.Find("CONN_TIMEOUT"), nullptr);
}

}  // namespace
}  // namespace tk::ado
