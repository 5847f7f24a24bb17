#include "win32/system/local_machine.h"

#include <strings.h>
#include <sys/utsname.h>

#include <string>

#include "tkwin32/text.h"

namespace tk::system {

bool IsThisMachine(std::u16string_view name) {
    if (name.starts_with(u"\\\\")) name.remove_prefix(2);
    const std::string wanted = text::Utf16ToUtf8(name);
    utsname own{};
    uname(&own);
    const std::string full = own.nodename;
    for (const std::string& known : {std::string(), std::string("localhost"), std::string("127.0.0.1"),
                                     std::string("."), full, full.substr(0, full.find('.'))}) {
        if (strcasecmp(wanted.c_str(), known.c_str()) == 0) return true;
    }
    return false;
}

}  // namespace tk::system
