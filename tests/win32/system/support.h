// What the tests of the platform's services share: a folder that goes away, an environment that is put back, an
// apartment that is left, files as UTF-8.
#pragma once

#include <dirent.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <thread>

#include "ole2.h"

namespace tk::test {

class TempFolder {
public:
    TempFolder() {
        char name[] = "/tmp/tk-system-XXXXXX";
        path_ = mkdtemp(name);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    ~TempFolder() { Remove(path_); }

    const std::string& Path() const { return path_; }
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }

private:
    static void Remove(const std::string& folder) {
        DIR* entries = opendir(folder.c_str());
        while (const dirent* entry = entries != nullptr ? readdir(entries) : nullptr) {
            const std::string name = entry->d_name;
            if (name == "." || name == "..") continue;
            const std::string path = folder + "/" + name;
            struct stat state {};
            lstat(path.c_str(), &state);
            if (S_ISDIR(state.st_mode)) {
                Remove(path);
            } else {
                unlink(path.c_str());
            }
        }
        if (entries != nullptr) closedir(entries);
        rmdir(folder.c_str());
    }

    std::string path_;
};

/// Sets a variable of the environment, or takes it out for null, and puts it back at the end.
class Variable {
public:
    Variable(const char* name, const char* value) : name_(name) {
        if (const char* old = std::getenv(name)) old_ = old;
        Put(value);
    }
    Variable(const char* name, const std::string& value) : Variable(name, value.c_str()) {}
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;
    ~Variable() { Put(old_ ? old_->c_str() : nullptr); }

private:
    void Put(const char* value) {
        if (value != nullptr) {
            setenv(name_.c_str(), value, 1);
        } else {
            unsetenv(name_.c_str());
        }
    }

    std::string name_;
    std::optional<std::string> old_;
};

/// The calling thread in an apartment, for as long as it lives.
class Apartment {
public:
    explicit Apartment(DWORD mode = COINIT_MULTITHREADED) { EXPECT_EQ(CoInitializeEx(nullptr, mode), S_OK); }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
    ~Apartment() { CoUninitialize(); }
};

template <class Work>
auto OnThread(Work work) {
    decltype(work()) result{};
    std::thread([&] { result = work(); }).join();
    return result;
}

inline void WriteFile(const std::string& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
}

inline std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline const char* Utf8(const char8_t* text) {
    return reinterpret_cast<const char*>(text);
}

}  // namespace tk::test
