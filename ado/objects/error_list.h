// ado/objects/error_list.h - the errors of one connection: the records of its last provider failure.
//
// Threads: any.
#pragma once

#include <mutex>
#include <optional>
#include <vector>

#include "ado/error.h"

namespace tk::ado {

class ErrorList {
public:
    /// The records of a new failure take the place of the former ones.
    void Replace(const std::vector<ErrorRecord>& records) {
        const std::lock_guard lock(mutex_);
        records_ = records;
    }

    /// A warning comes behind what is there.
    void Append(ErrorRecord record) {
        const std::lock_guard lock(mutex_);
        records_.push_back(std::move(record));
    }
    void Clear() {
        const std::lock_guard lock(mutex_);
        records_.clear();
    }
    std::size_t Count() const {
        const std::lock_guard lock(mutex_);
        return records_.size();
    }
    std::optional<ErrorRecord> At(std::size_t index) const {
        const std::lock_guard lock(mutex_);
        if (index >= records_.size()) return std::nullopt;
        return records_[index];
    }

private:
    mutable std::mutex mutex_;
    std::vector<ErrorRecord> records_;
};

}  // namespace tk::ado
