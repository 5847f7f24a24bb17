#include <algorithm>
#include <cctype>
#include <filesystem>
#include <system_error>

#include "tools/tkdb/commands.h"
#include "tools/tkdb/interruption.h"
#include "tools/tkdb/print.h"
#include "tools/tkdb/progress.h"
#include "tools/tkdb/replacing_file.h"
#include "tools/tkdb/terminal_text.h"
#include "tools/tkdb/write_rows.h"

namespace tk::tools {
namespace {

struct Form {
    ExportFormat format;
    const char* extension;
    bool bySave;   // the recordset writes itself
    long persist;  // ADO PersistFormatEnum
    Format rows;
};

constexpr Form kForms[] = {
    {ExportFormat::Csv, ".csv", false, 0, Format::Csv},          {ExportFormat::Json, ".json", false, 0, Format::Json},
    {ExportFormat::Markdown, ".md", false, 0, Format::Markdown}, {ExportFormat::Xml, ".xml", true, 1, Format::Table},
    {ExportFormat::TableGram, ".adtg", true, 0, Format::Table},
};

const Form* FindForm(ExportFormat format, const std::string& file) {
    std::string extension = std::filesystem::path(file).extension();
    std::ranges::transform(extension, extension.begin(), [](unsigned char c) { return std::tolower(c); });
    const auto found = std::ranges::find_if(kForms, [&](const Form& form) {
        return format == ExportFormat::FromName ? extension == form.extension : format == form.format;
    });
    return found == std::end(kForms) ? nullptr : found;
}

/// The query itself; or, when the text is the name of a table, the query for all of it.
std::string QueryOf(const std::string& source) {
    if (source.find_first_of(" \t\r\n()*'\"`;,") != std::string::npos) return source;
    std::string name = "\"";
    for (const char c : source)
        c == '.' ? name += "\".\"" : name += c;
    return "SELECT * FROM " + name + "\"";
}

/// @return rows written
long SaveRows(CTRecordset& records, long format, const ReplacingFile& file) {
    ByteProgress progress("writing", [&file]() noexcept { return file.Size(); });
    const CString path = TerminalToGbk(file.Path().string()).c_str();
    records.Save(COleVariant(path, VT_BSTR), format);
    return records.GetRecordCount();
}

}  // namespace

int ExportRows(const std::string& connection, const std::string& source, ExportFormat format, const std::string& file) {
    const Form* form = FindForm(format, file);
    if (form == nullptr) {
        Complain("--format is needed: the name {} does not tell it", file);
        return kWrongUsage;
    }
    CTDatabase database;
    CTRecordset records;
    if (!OpenDatabase(database, connection)) return Refuse(database.GetLastErrorString());
    if (!records.OpenDatabase(&database)) return Refuse(records.GetLastErrorString());
    if (!records.OpenSQL(TerminalToGbk(QueryOf(source)).c_str(), 1)) return Refuse(records.GetLastErrorString());
    if (records.GetState() == 0) {
        Complain("the statement has no rows to export");
        return kWrongUsage;
    }
    try {
        const Interruption interruption;
        ReplacingFile target(file);
        const std::string path = target.Path().string();
        if (form->bySave && GbkToTerminal(TerminalToGbk(path)) != path) {
            return Unwritable(file, "its folder has characters outside GBK");
        }
        const long rows = form->bySave ? SaveRows(records, form->persist, target)
                                       : WriteRows(records, form->rows, target.Open(), Charset::Utf8, 0);
        if (Interruption::Wanted()) {
            Complain("stopped; {} is as it was", file);
            return kInterrupted;
        }
        target.Commit();
        Print("{} row(s): {}\n", rows, file);
    } catch (const std::system_error& e) {
        return Unwritable(file, e.code());
    } catch (CException* e) {
        return Refuse(e);
    }
    return kSuccess;
}

}  // namespace tk::tools
