#include "tools/tkdb/result_writer.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>

namespace tk::tools {
namespace {

CellText Text(const char* utf8) {
    return {CellNature::Text, utf8};
}
CellText Number(const char* utf8) {
    return {CellNature::Number, utf8};
}
const CellText kNull{};

std::string Written(Format format, const std::function<void(ResultWriter&)>& work) {
    char* data = nullptr;
    std::size_t size = 0;
    std::FILE* out = open_memstream(&data, &size);
    const auto writer = MakeResultWriter(format, out, Charset::Terminal);
    work(*writer);
    writer->Finish();
    std::fclose(out);
    std::string text(data, size);
    std::free(data);
    return text;
}

TEST(TableWriter, AlignsNumbersRightAndTextsLeft) {
    EXPECT_EQ(Written(Format::Table,
                      [](ResultWriter& writer) {
                          writer.Columns({"id", "name"});
                          writer.Row({Number("7"), Text("tea")});
                          writer.Row({Number("1234"), kNull});
                      }),
              "  id  name\n----  ----\n   7  tea\n1234\n");
}

TEST(TableWriter, CountsChineseCharactersAsTwoColumns) {
    // The two texts are given as UTF-8 bytes: U+540D U+79F0 and U+8336.
    EXPECT_EQ(Written(Format::Table,
                      [](ResultWriter& writer) {
                          writer.Columns({"\xE5\x90\x8D\xE7\xA7\xB0", "b"});
                          writer.Row({Text("\xE8\x8C\xB6"), Text("x")});
                      }),
              "\xE5\x90\x8D\xE7\xA7\xB0  b\n----  -\n\xE8\x8C\xB6    x\n");
}

TEST(TableWriter, KeepsARowOnOneLine) {
    EXPECT_EQ(Written(Format::Table,
                      [](ResultWriter& writer) {
                          writer.Columns({"a"});
                          writer.Row({Text("one\r\ntwo\tthree")});
                      }),
              "a\n--------------\none  two three\n");
}

TEST(TableWriter, PrintsHeadersOfAnEmptyResult) {
    EXPECT_EQ(Written(Format::Table, [](ResultWriter& writer) { writer.Columns({"a", "bc"}); }), "a  bc\n-  --\n");
}

TEST(CsvWriter, QuotesWhatNeedsQuotes) {
    EXPECT_EQ(Written(Format::Csv,
                      [](ResultWriter& writer) {
                          writer.Columns({"a", "b,c"});
                          writer.Row({Text("say \"hi\""), Text("two\nlines")});
                      }),
              "a,\"b,c\"\r\n\"say \"\"hi\"\"\",\"two\nlines\"\r\n");
}

TEST(CsvWriter, TellsNullFromEmptyText) {
    EXPECT_EQ(Written(Format::Csv,
                      [](ResultWriter& writer) {
                          writer.Columns({"a", "b"});
                          writer.Row({kNull, Text("")});
                      }),
              "a,b\r\n,\"\"\r\n");
}

TEST(JsonWriter, WritesAnArrayOfObjects) {
    EXPECT_EQ(Written(Format::Json,
                      [](ResultWriter& writer) {
                          writer.Columns({"n", "t"});
                          writer.Row({Number("1.5"), Text("a\"\\\n\x01")});
                          writer.Row({kNull, {CellNature::Boolean, "true"}});
                      }),
              "[\n  {\"n\": 1.5, \"t\": \"a\\\"\\\\\\n\\u0001\"},\n  {\"n\": null, \"t\": true}\n]\n");
    EXPECT_EQ(Written(Format::Json, [](ResultWriter& writer) { writer.Columns({"n"}); }), "[]\n");
}

TEST(JsonWriter, WritesInfinitiesAsTexts) {
    EXPECT_EQ(Written(Format::Json,
                      [](ResultWriter& writer) {
                          writer.Columns({"n"});
                          writer.Row({Number("inf")});
                      }),
              "[\n  {\"n\": \"inf\"}\n]\n");
}

TEST(MarkdownWriter, EscapesBars) {
    EXPECT_EQ(Written(Format::Markdown,
                      [](ResultWriter& writer) {
                          writer.Columns({"a"});
                          writer.Row({Text("x|y")});
                      }),
              "| a |\n| --- |\n| x\\|y |\n");
}

}  // namespace
}  // namespace tk::tools
