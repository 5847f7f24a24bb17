// Resource scripts: what is read of them, and what is passed over.
#include <gtest/gtest.h>
#include <windows.h>

#include "win32/window/resource_script.h"

using tk::window::MenuTemplate;
using tk::window::ParseResourceScript;
using tk::window::ResourceScript;

namespace {

std::string Header(const std::string& name, void*) {
    return name == "resource.h" ? "#define IDS_TITLE 101\n#define IDS_SAME IDS_TITLE\n#define ID_HEX 0x65\n" : "";
}

ResourceScript Parse(const std::string& text) {
    return ParseResourceScript(text, &Header, nullptr);
}

std::string TextOf(const std::string& script, UINT number = 101) {
    const auto parsed = Parse(script);
    const auto found = parsed.texts.find(number);
    return found != parsed.texts.end() ? found->second : "none";
}

}  // namespace

TEST(ResourceScript, GivesTexts) {
    static const struct {
        const char* label;
        std::string script;
        std::string text;
    } kRows[] = {
        {"a number", "STRINGTABLE BEGIN 101 \"a\" END", "a"},
        {"braces", "stringtable { 101 \"a\" }", "a"},
        {"a comma", "STRINGTABLE { 101, \"a\", 102, \"b\" }", "a"},
        {"options", "STRINGTABLE LANGUAGE 4, 2 DISCARDABLE\nBEGIN 101 \"a\" END", "a"},
        {"a name", "#define IDS_X 101 // number\nSTRINGTABLE { IDS_X \"a\" }", "a"},
        {"a name in parentheses", "#define IDS_X (101)\nSTRINGTABLE { IDS_X \"a\" }", "a"},
        {"a name of a header", "#include \"resource.h\"\nSTRINGTABLE { IDS_TITLE \"a\" }", "a"},
        {"a name of a name", "#include \"resource.h\"\nSTRINGTABLE { IDS_SAME \"a\" }", "a"},
        {"hexadecimal", "#include \"resource.h\"\nSTRINGTABLE { ID_HEX \"a\" }", "a"},
        {"escapes", R"(STRINGTABLE { 101 "a\tb\n\\\"c\x" })", "a\tb\n\\\"c\\x"},
        {"doubled marks", R"(STRINGTABLE { 101 "say ""x""" })", "say \"x\""},
        {"texts side by side", "STRINGTABLE { 101 \"a\" \"b\" }", "ab"},
        {"comments", "/* STRINGTABLE { 101 \"x\" } */ STRINGTABLE { // 101 \"y\"\n 101 \"a\" }", "a"},
        {"UTF-8", "\xEF\xBB\xBFSTRINGTABLE { 101 \"\xE5\xBA\x93\" }", "库"},
        {"GBK", "#pragma code_page(936)\nSTRINGTABLE { 101 \"库\x95\x5C\" }", "库\x95\x5C"},
        {"other resources before", "1 ICON \"x.ico\"\nVS RCDATA BEGIN 1, \"x\" END\nSTRINGTABLE { 101 \"a\" }", "a"},
        {"an unknown name", "STRINGTABLE { IDS_UNKNOWN \"a\" }", "none"},
        {"a name that is itself", "#define A A\nSTRINGTABLE { A \"a\" }", "none"},
        {"no end", "STRINGTABLE { 101 \"a", "a"},
        {"nothing", "", "none"},
        {"no text",
         std::string("\x7F"
                     "ELF\0\0\"{",
                     8),
         "none"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(TextOf(row.script), row.text);
    }
}

TEST(ResourceScript, GivesMenus) {
    const auto script = Parse(R"(IDR_MAIN MENU DISCARDABLE
BEGIN
    POPUP "&File", GRAYED
    BEGIN
        MENUITEM "Open", 1, CHECKED | INACTIVE
        MENUITEM SEPARATOR
        POPUP "Deep" { MENUITEM "End of it", 0x10, GRAYED }
    END
    MENUITEM "Help", 2
END
7 MENU { MENUITEM "x", 3 })");
    ASSERT_EQ(script.menus.size(), 2u);
    const auto& items = script.menus.at("IDR_MAIN").items;
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(items[0].flags, MF_POPUP | MF_GRAYED);
    EXPECT_EQ(items[0].text, "&File");
    ASSERT_EQ(items[0].items.size(), 3u);
    EXPECT_EQ(items[0].items[0].flags, MF_CHECKED | MF_DISABLED);
    EXPECT_EQ(items[0].items[0].command, 1u);
    EXPECT_EQ(items[0].items[1].flags, MF_SEPARATOR);
    ASSERT_EQ(items[0].items[2].items.size(), 1u);
    EXPECT_EQ(items[0].items[2].items[0].command, 16u);
    EXPECT_EQ(items[0].items[2].items[0].text, "End of it");
    EXPECT_EQ(items[1].command, 2u);
    EXPECT_EQ(script.menus.at("7").items.at(0).text, "x");
}

TEST(ResourceScript, EndsWithEveryInput) {
    const std::string whole =
        "#define A 1\n1 MENU { POPUP \"a\" { MENUITEM \"b\", A, GRAYED MENUITEM SEPARATOR } } STRINGTABLE "
        "BEGIN 1 \"x\" END /* */ // \n";
    for (std::size_t length = 0; length < whole.size(); ++length) {
        Parse(whole.substr(0, length));
        Parse(whole.substr(length));
        std::string changed = whole;
        changed[length] = '{';
        EXPECT_LE(Parse(changed).menus.size(), 2u);
        changed[length] = '"';
        EXPECT_LE(Parse(changed).texts.size(), 2u);
    }
    std::string deep = "1 MENU {";
    for (int i = 0; i < 5000; ++i)
        deep += " POPUP \"x\" {";
    EXPECT_EQ(Parse(deep).menus.size(), 1u);
}
