#include "ado/persist/xml_parser.h"

#include <tkwin32/text.h>

#include <algorithm>
#include <new>
#include <string>

#include "ado/cursor/text.h"
#include "ado/messages.h"
#include "ado/odbc/ascii.h"
#include "ado/persist/messages.h"

namespace tk::ado::xml {
namespace {

struct ParserCloser {
    void operator()(XML_Parser parser) const noexcept { XML_ParserFree(parser); }
};

/// The library is C: what a handler throws waits here until the library has returned.
struct Parsing {
    XML_Parser parser = nullptr;
    ElementHandler* handler = nullptr;
    std::exception_ptr failure;
    bool hasDoctype = false;
    bool hasMoved = false;  // since the last piece

    template <class Work>
    void Guard(Work work) noexcept {
        hasMoved = true;
        if (failure) return;
        try {
            work();
        } catch (...) {
            failure = std::current_exception();
            XML_StopParser(parser, XML_FALSE);
        }
    }
};

void XMLCALL OnBegin(void* user, const XML_Char* name, const XML_Char** attributes) {
    auto& parsing = *static_cast<Parsing*>(user);
    parsing.Guard([&] { parsing.handler->Begin(name, attributes); });
}

void XMLCALL OnEnd(void* user, const XML_Char*) {
    auto& parsing = *static_cast<Parsing*>(user);
    parsing.Guard([&] { parsing.handler->End(); });
}

void XMLCALL OnDoctype(void* user, const XML_Char*, const XML_Char*, const XML_Char*, int) {
    auto& parsing = *static_cast<Parsing*>(user);
    parsing.hasDoctype = true;
    XML_StopParser(parsing.parser, XML_FALSE);
}

int ConvertGbk(void*, const char* bytes) {
    char16_t unit = 0;
    const auto done = text::GbkToUtf16({bytes, 2}, &unit, 1);
    return done.replaced || done.read != 2 ? -1 : unit;
}

/// Files that people make by hand on a Chinese system.
int XMLCALL OnEncoding(void*, const XML_Char* name, XML_Encoding* encoding) {
    static constexpr std::string_view kNames[] = {"GBK", "GB2312", "CP936", "GB18030"};
    if (std::ranges::none_of(kNames, [&](std::string_view known) { return EqualsNoCase(known, name); })) {
        return XML_STATUS_ERROR;
    }
    for (int byte = 0; byte < 256; ++byte)
        encoding->map[byte] = byte < 0x80 ? byte : byte == 0x80 ? 0x20AC : byte == 0xFF ? -1 : -2;
    encoding->data = nullptr;
    encoding->convert = ConvertGbk;
    encoding->release = nullptr;
    return XML_STATUS_OK;
}

}  // namespace

void ParseXml(ByteSource& source, ElementHandler& handler) {
    constexpr int kPiece = 64 * 1024;
    constexpr int kMostPiece = 64 * 1024 * 1024;
    const std::unique_ptr<XML_ParserStruct, ParserCloser> owner(XML_ParserCreateNS(nullptr, kSeparator));
    XML_Parser const parser = owner.get();
    if (parser == nullptr) throw std::bad_alloc();
    Parsing parsing;
    parsing.parser = parser;
    parsing.handler = &handler;
    XML_SetUserData(parser, &parsing);
    XML_SetElementHandler(parser, OnBegin, OnEnd);
    XML_SetStartDoctypeDeclHandler(parser, OnDoctype);
    XML_SetUnknownEncodingHandler(parser, OnEncoding, nullptr);
    int piece = kPiece;
    for (bool isLast = false; !isLast;) {
        void* const buffer = XML_GetBuffer(parser, piece);
        if (buffer == nullptr) source.Fail(kTextTooLong);
        const std::size_t count = source.Read(static_cast<char*>(buffer), static_cast<std::size_t>(piece));
        isLast = count == 0;
        parsing.hasMoved = false;
        const XML_Status status = XML_ParseBuffer(parser, static_cast<int>(count), isLast ? 1 : 0);
        if (parsing.failure) std::rethrow_exception(parsing.failure);
        if (parsing.hasDoctype) source.Fail(kTextDoctype);
        if (status != XML_STATUS_OK) {
            source.Fail(std::u16string(isLast ? kTextTruncated : kTextDamaged) + u" (" + std::u16string(kTextLine) +
                        u" " + NumberText(static_cast<long long>(XML_GetCurrentLineNumber(parser))) + kColon +
                        ToUtf16(XML_ErrorString(XML_GetErrorCode(parser))) + u")");
        }
        // A tag that does not end is looked at again with each piece: growing pieces keep that within bounds.
        piece = parsing.hasMoved ? kPiece : std::min(piece * 2, kMostPiece);
    }
}

}  // namespace tk::ado::xml
