// The class registry: which shared object serves a class, and which class a ProgID names.
//
// Read from small text files and a list that is built in; files are read again when they change.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "guiddef.h"

namespace tk::system {

/// The server of the classes that this library serves itself; not loaded, it is there.
inline constexpr char kThisLibrary[] = "libtkwin32.so";

struct RegisteredClass {
    CLSID clsid{};
    std::string progId;  // in UTF-8; empty when the class has none
    std::string server;  // UTF-8; a path, or the bare name of a file beside this library or known to the loader
};

std::optional<RegisteredClass> FindClass(REFCLSID clsid);

/// All classes, each once, in the order they are found in.
std::vector<RegisteredClass> AllClasses();

/// The case of Latin letters does not matter. A name that is not registered is looked for once more without its
/// version tail (".2", ".2.8").
std::optional<CLSID> FindProgId(std::string_view progId);

/// The path a bare server name stands for when there is such a file beside this library, else the name itself.
std::string ServerPath(const std::string& server);

}  // namespace tk::system
