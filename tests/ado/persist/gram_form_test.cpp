// The table-gram byte by byte, and what other writers may put into one.
#include "saved_rows.h"

namespace tk::ado::test {
namespace {

using namespace std::string_literals;

/// Bytes from hexadecimal digits and quoted texts: `07 FF "ab" u"ab"`.
std::string Bytes(std::string_view text) {
    std::string bytes;
    for (std::size_t at = 0; at < text.size();) {
        if (text[at] == ' ' || text[at] == '\n') {
            ++at;
        } else if (text[at] == '"' || text[at] == 'u') {
            const bool isWide = text[at] == 'u';
            at += isWide ? 2 : 1;
            for (; text[at] != '"'; ++at) {
                bytes += text[at];
                if (isWide) bytes += '\0';
            }
            ++at;
        } else {
            bytes += static_cast<char>(std::stoi(std::string(text.substr(at, 2)), nullptr, 16));
            at += 2;
        }
    }
    return bytes;
}

constexpr const char* kHead =
    "01 07 \"TG!\" 00 00 00 00 "
    "02 19 00 B6 92 F2 3F 04 B2 CF 11 8D 23 00 AA 00 5F FE 58 01 00 00 00 00 00 00 00 00 ";

/// A result descriptor without properties, for so many columns.
std::string Result(const char* columns) {
    return "03 21 00 D2 AD 63 F6 02 EB CF 11 B0 E3 00 AA 00 3F 00 0F 00 00 00 "s + columns + " " + columns +
           " 00 00 01 00 00 00 00 00 00 00 ";
}

TEST(TableGram, IsWrittenToTheByte) {
    std::vector<Column> columns = {MakeColumn(u"id", 3, 0, 0), MakeColumn(u"name", 202, 20, 0x60),
                                   MakeColumn(u"flag", 11, 0, 0x60)};
    columns[0].baseTable = "t";
    columns[0].baseColumn = "id";
    columns[0].isKey = true;
    columns[0].attributes |= 0x8000;
    columns[0].sqlType = 4;
    columns[1].sqlType = -9;
    columns[2].sqlType = -7;
    RowStore store(TextRows(columns, {{"7", "ab", "1"}, {"8", nullptr, nullptr}, {"9", "", "0"}}));
    std::vector<std::optional<Value>> values(3);
    values[1] = Text(u"c");
    values[2] = Null();
    store.Change(2, values, kStatusPending | kStatusModified);
    store.Delete(1, kStatusPending | kStatusDeleted);
    std::vector<std::optional<Value>> added(3);
    added[0] = Number(10);
    added[1] = Null();
    store.Add(added, kStatusPending | kStatusNew);
    const std::string expected = Bytes(
        std::string(kHead) +
        "03 67 00 D2 AD 63 F6 02 EB CF 11 B0 E3 00 AA 00 3F 00 0F 00 00 00 03 00 03 00 00 00 01 00 00 00 00 00 00 00 "
        "01 00 C1 3C 8E B6 EB 6D D0 11 8D F6 00 AA 00 5F FE 58 07 00 "
        "0B 00 00 00 04 00 01 00 00 00  13 00 00 00 04 00 01 00 00 00  0D 00 00 00 00 00  0E 00 00 00 00 00 "
        "0F 00 00 00 00 00  10 00 00 00 00 00  12 00 00 00 00 00 "
        "10 7C 00 02 00 BE 22 B5 C8 F3 5C CE 11 AD E5 00 AA 00 44 77 3D 04 00 "
        "7F 00 00 00 02 00 FF FF  86 00 00 00 02 00 FF FF  22 00 00 00 04 00 1E 00 00 00  49 00 00 00 04 00 00 00 00 "
        "00 "
        "C1 3C 8E B6 EB 6D D0 11 8D F6 00 AA 00 5F FE 58 05 00 "
        "04 00 00 00 04 00 0F 00 00 00  05 00 00 00 04 00 02 00 00 00  03 00 00 00 04 00 0F 00 00 00 "
        "07 00 00 00 04 00 32 00 00 00  08 00 00 00 04 00 03 00 00 00 "
        "05 16 00 01 00 03 00 u\"\"22 00 u\"t\" 22 00 01 00 u\"t\" 00 00 01 00 01 00 01 00 "
        "06 21 00 50 00 00 01 00 01 00 02 00 u\"id\" 03 00 04 00 00 00 0A 00 00 00 FF 00 00 00 14 80 00 00 FF FF "
        "06 23 00 80 00 00 02 00 04 00 u\"name\" 82 00 14 00 00 00 FF 00 00 00 FF 00 00 00 64 00 00 00 FF FF "
        "06 23 00 80 00 00 03 00 04 00 u\"flag\" 0B 00 02 00 00 00 FF 00 00 00 FF 00 00 00 74 00 00 00 FF FF "
        "07 FF 07 00 00 00 04 u\"ab\" FF FF "
        "07 3F 08 00 00 00 0C "
        "07 FF 09 00 00 00 00 00 00 0A 60 20 02 u\"c\" "
        "0D C0 40 0A 00 00 00 "
        "0F");
    EXPECT_EQ(SavedBytes(store, PersistFormat::Binary), expected);
}

TEST(TableGram, OfAnotherWriterIsRead) {
    // A key of fixed text in the writer's code page, nullable texts, a hidden key column, every part that may be there.
    const std::string file = Bytes(
        std::string(kHead) + Result("04 00") +
        "05 32 00 01 00 08 00 u\"pubs..ps\" 0A 00 u\"Publishers\" 00 00 04 00 01 00 01 00 "
        "06 31 00 F2 01 00 01 00 02 00 u\"No\" 01 00 01 00 02 00 u\"id\" 81 00 04 00 00 00 FF 00 00 00 FF 00 00 00 "
        "18 80 00 00 02 00 u\"db\" 00 00 FF FF "
        "06 1F 00 80 00 00 02 00 02 00 u\"na\" 81 00 28 00 00 00 FF 00 00 00 FF 00 00 00 68 00 00 00 FF FF "
        "06 1D 00 80 00 00 03 00 01 00 u\"m\" 06 00 08 00 00 00 13 00 00 00 FF 00 00 00 78 00 00 00 FF FF "
        "06 1D 00 80 00 00 04 00 01 00 u\"h\" 81 00 28 00 00 00 FF 00 00 00 FF 00 00 00 68 00 00 00 00 00 "
        "07 FF \"0736\" 04 D6 D0 \"AB\" 40 E2 01 00 00 00 00 00 03 \"xyz\" "
        "07 1F \"9999\" "
        "0F");
    const auto store = StoreOf(Load(file));
    ASSERT_EQ(store->Columns().size(), 3u);
    const Column& key = store->Columns()[0];
    EXPECT_EQ(key.name, u"No");
    EXPECT_EQ(key.baseColumn, "id");
    EXPECT_EQ(key.baseTable, "Publishers");
    EXPECT_EQ(key.baseCatalog, "db");
    EXPECT_EQ(key.type, 129);
    EXPECT_EQ(key.definedSize, 4);
    EXPECT_TRUE(key.isKey);
    EXPECT_EQ(store->CountRows(), 2u);
    EXPECT_EQ(Exactly(*store, 0, 0), "8:0736");
    EXPECT_EQ(Exactly(*store, 0, 1),
              "8:\xE4\xB8\xAD"
              "AB");
    tk::test::Value money;
    store->Read(0, 2, money);
    EXPECT_EQ(tk::test::Show(money), "DECIMAL 12.3456");
    EXPECT_EQ(Exactly(*store, 1, 1), "1:");
    EXPECT_EQ(Exactly(*store, 1, 2), "1:");
}

/// A file of one column, of a type, with the bytes of one row's value.
std::string OneValue(const char* type, const char* maximum, const char* flags, const std::string& row) {
    return Bytes(std::string(kHead) + Result("01 00") + "06 1D 00 80 00 00 01 00 01 00 u\"v\" " + type + " " + maximum +
                 " FF 00 00 00 FF 00 00 00 " + flags + " FF FF " + row + " 0F");
}

TEST(TableGram, ReadsEveryTypeAndRefusesWhatNoneCanBe) {
    const struct {
        const char* label;
        const char* type;
        const char* maximum;
        const char* flags;
        const char* row;
        const char* shown;  // "" for a refusal
    } rows[] = {
        {"I1", "10 00", "01 00 00 00", "74 00 00 00", "07 FF FF", "I2 -1"},
        {"UI1", "11 00", "01 00 00 00", "74 00 00 00", "07 FF FF", "UI1 255"},
        {"I2", "02 00", "02 00 00 00", "74 00 00 00", "07 FF FE FF", "I2 -2"},
        {"UI2", "12 00", "02 00 00 00", "74 00 00 00", "07 FF FF FF", "I4 65535"},
        {"UI4", "13 00", "04 00 00 00", "74 00 00 00", "07 FF FF FF FF FF", "R8 4294967295"},
        {"I8", "14 00", "08 00 00 00", "74 00 00 00", "07 FF FF FF FF FF FF FF FF FF", "DECIMAL -1"},
        {"UI8", "15 00", "08 00 00 00", "74 00 00 00", "07 FF FF FF FF FF FF FF FF FF", "DECIMAL 18446744073709551615"},
        {"R4", "04 00", "04 00 00 00", "74 00 00 00", "07 FF 00 00 00 3F", "R4 0.5"},
        {"DATE", "07 00", "08 00 00 00", "74 00 00 00", "07 FF 00 00 00 00 00 00 F4 BF", "DATE 1899-12-29 06:00:00"},
        {"DATE beyond all", "07 00", "08 00 00 00", "74 00 00 00", "07 FF 00 00 00 00 00 00 F0 7F", ""},
        {"BOOL of 1", "0B 00", "02 00 00 00", "74 00 00 00", "07 FF 01 00", "BOOL true"},
        {"GUID", "48 00", "10 00 00 00", "74 00 00 00", "07 FF FF 19 96 6F 86 8B 11 D0 B4 2D 00 C0 4F C9 64 FF",
         "BSTR {6F9619FF-8B86-D011-B42D-00C04FC964FF}"},
        {"DECIMAL", "0E 00", "10 00 00 00", "74 00 00 00", "07 FF 00 00 02 80 00 00 00 00 39 30 00 00 00 00 00 00",
         "DECIMAL -123.45"},
        {"DECIMAL of a scale there is not", "0E 00", "10 00 00 00", "74 00 00 00",
         "07 FF 00 00 1D 00 00 00 00 00 39 30 00 00 00 00 00 00", ""},
        {"DECIMAL of a sign there is not", "0E 00", "10 00 00 00", "74 00 00 00",
         "07 FF 00 00 02 01 00 00 00 00 39 30 00 00 00 00 00 00", ""},
        {"NUMERIC", "83 00", "13 00 00 00", "74 00 00 00",
         "07 FF 05 02 01 39 30 00 00 00 00 00 00 00 00 00 00 00 00 00 00", "DECIMAL 123.45"},
        {"NUMERIC of a negative scale", "83 00", "13 00 00 00", "74 00 00 00",
         "07 FF 05 FE 01 39 30 00 00 00 00 00 00 00 00 00 00 00 00 00 00", ""},
        {"VARNUMERIC of five digits", "8B 00", "13 00 00 00", "74 00 00 00", "07 FF 05 02 00 39 30 00",
         "DECIMAL -123.45"},
        {"VARNUMERIC of too many digits", "8B 00", "13 00 00 00", "74 00 00 00", "07 FF 27 02 00 39 30 00", ""},
        {"DBDATE", "85 00", "06 00 00 00", "74 00 00 00", "07 FF D3 07 07 00 04 00", "DATE 2003-07-04 00:00:00"},
        {"DBDATE of a month there is not", "85 00", "06 00 00 00", "74 00 00 00", "07 FF D3 07 0D 00 04 00", ""},
        {"DBDATE of a day that month has not", "85 00", "06 00 00 00", "74 00 00 00", "07 FF D3 07 02 00 1E 00",
         "BSTR 2003-02-30"},
        {"DBTIME", "86 00", "06 00 00 00", "74 00 00 00", "07 FF 0D 00 05 00 09 00", "DATE 1899-12-30 13:05:09"},
        {"DBTIME of an hour there is not", "86 00", "06 00 00 00", "74 00 00 00", "07 FF 18 00 05 00 09 00", ""},
        {"DBTIMESTAMP", "87 00", "10 00 00 00", "74 00 00 00", "07 FF D3 07 07 00 04 00 0D 00 05 00 09 00 00 00 00 00",
         "DATE 2003-07-04 13:05:09"},
        {"DBTIMESTAMP of the last nanosecond of a second", "87 00", "10 00 00 00", "74 00 00 00",
         "07 FF D3 07 07 00 04 00 0D 00 05 00 09 00 FF C9 9A 3B", "DATE 2003-07-04 13:05:09.999"},
        {"DBTIMESTAMP of a whole second of nanoseconds", "87 00", "10 00 00 00", "74 00 00 00",
         "07 FF D3 07 07 00 04 00 0D 00 05 00 09 00 00 CA 9A 3B", ""},
        {"DBTIMESTAMP of more nanoseconds than a number takes", "87 00", "10 00 00 00", "74 00 00 00",
         "07 FF D3 07 07 00 04 00 0D 00 05 00 09 00 FF FF FF FF", ""},
        {"bytes", "80 00", "0A 00 00 00", "64 00 00 00", "07 FF 02 CA FE", "BYTES cafe"},
        {"more bytes than it may have", "80 00", "01 00 00 00", "64 00 00 00", "07 FF 02 CA FE", ""},
        {"text of half a character", "82 00", "0A 00 00 00", "64 00 00 00", "07 FF 03 41 00 42", ""},
        {"text longer than the file", "82 00", "FF FF FF FF", "E4 00 00 00", "07 FF F0 FF FF 7F 41 00", ""},
        {"fixed text longer than the file", "82 00", "F0 FF FF 7F", "74 00 00 00", "07 FF 41 00", ""},
        {"a type there is not", "0C 00", "10 00 00 00", "74 00 00 00", "07 FF 00", ""},
        {"a chapter", "88 00", "04 00 00 00", "74 00 00 00", "07 FF 00 00 00 00", ""},
        {"a change of no row", "03 00", "04 00 00 00", "74 00 00 00", "0A FF 00 01 00 00 00", ""},
        {"a deletion of no row", "03 00", "04 00 00 00", "74 00 00 00", "0C", ""},
        {"a second change of a row", "03 00", "04 00 00 00", "74 00 00 00", "07 FF 01 00 00 00 0C 0C", ""},
        {"a row of a child", "03 00", "04 00 00 00", "74 00 00 00", "87 01 00 00 00 FF 01 00 00 00", ""},
        {"a token there is not", "03 00", "04 00 00 00", "74 00 00 00", "55", ""},
        {"something behind the end", "03 00", "04 00 00 00", "74 00 00 00", "0F", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        const std::string file = OneValue(row.type, row.maximum, row.flags, row.row);
        if (*row.shown == '\0') {
            EXPECT_EQ(ErrorOf([&] { Load(file); }), 3003);
            continue;
        }
        try {
            const auto store = StoreOf(Load(file));
            ASSERT_EQ(store->CountRows(), 1u);
            tk::test::Value value;
            store->Read(0, 0, value);
            EXPECT_EQ(tk::test::Show(value), row.shown);
        } catch (const AdoError& error) {
            ADD_FAILURE() << error.what();
        }
    }
}

// It is read in pieces, whose ends fall into a character sooner or later.
TEST(TableGram, ReadsALongTextOfTheWritersCodePage) {
    constexpr std::uint32_t kCharacters = 100'000;
    for (const std::uint32_t before : {0u, 1u}) {
        SCOPED_TRACE(before);
        const std::uint32_t size = before + 2 * kCharacters;
        std::string file = OneValue("81 00", "FF FF FF FF", "E4 00 00 00", "07 FF");
        file.pop_back();  // the end
        for (int shift = 0; shift < 32; shift += 8)
            file += static_cast<char>(size >> shift);
        std::string expected = "8:";
        file.append(before, 'x');
        expected.append(before, 'x');
        for (std::uint32_t i = 0; i < kCharacters; ++i) {
            file += "\xBF\xE2";
            expected += "\xE5\xBA\x93";
        }
        const auto store = StoreOf(Load(file + '\x0F'));
        ASSERT_EQ(store->CountRows(), 1u);
        EXPECT_TRUE(Exactly(*store, 0, 0) == expected) << "too long to be shown";
    }
}

TEST(TableGram, RefusesDescriptionsThatContradictThemselves) {
    const std::string column =
        "06 1D 00 80 00 00 01 00 01 00 u\"v\" 03 00 04 00 00 00 FF 00 00 00 FF 00 00 00 74 00 00 00 FF FF ";
    const struct {
        const char* label;
        std::string file;
    } rows[] = {
        {"another version", "01 07 \"TG!\" 01 00 00 00 " + Result("01 00") + column + "0F"},
        {"no result descriptor", kHead + column + "0F"},
        {"two of them", kHead + Result("01 00") + Result("01 00") + column + "0F"},
        {"no column", kHead + Result("00 00") + "0F"},
        {"fewer columns than promised", kHead + Result("02 00") + column + "0F"},
        {"more columns than promised", kHead + Result("01 00") + column + column + "0F"},
        {"more columns than anybody has", kHead + Result("FF FF") + column + "0F"},
        {"a part that nobody knows", kHead + Result("01 00") +
                                         "06 1D 00 80 80 00 01 00 01 00 u\"v\" 03 00 04 00 00 00 FF 00 00 00 FF 00 00 "
                                         "00 74 00 00 00 FF FF 0F"},
        {"a name longer than its record", kHead + Result("01 00") +
                                              "06 1D 00 80 00 00 01 00 FF 00 u\"v\" 03 00 04 00 00 00 FF 00 00 00 FF "
                                              "00 00 00 74 00 00 00 FF FF 0F"},
        {"a table there is not", kHead + Result("01 00") +
                                     "06 1F 00 C0 00 00 01 00 01 00 u\"v\" 02 00 03 00 04 00 00 00 FF 00 00 00 FF 00 "
                                     "00 00 74 00 00 00 FF FF 0F"},
        {"only hidden columns", kHead + Result("01 00") +
                                    "06 1D 00 80 00 00 01 00 01 00 u\"v\" 03 00 04 00 00 00 FF 00 00 00 FF 00 00 00 "
                                    "74 00 00 00 00 00 0F"},
        {"property sets longer than their record", kHead + Result("01 00") + "10 02 00 FF FF " + column + "0F"},
        {"no end", kHead + Result("01 00") + column},
        {"not a byte of rows", kHead},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(ErrorOf([&] { Load(Bytes(row.file)); }), 3003);
    }
}

}  // namespace
}  // namespace tk::ado::test
