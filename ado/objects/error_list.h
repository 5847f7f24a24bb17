// ado/objects/error_list.h - the errors of one connection: the records of its last provider failure, and behind
// them the warnings of the last statement that gave some.
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
    /// The records of a new failure take the place of all former ones.
    void Replace(const std::vector<ErrorRecord>& records) {
        const std::lock_guard lock(mutex_);
        records_ = records;
        failures_ = records_.size();
    }

    /// The warnings of a statement come behind the last failure, in the place of a former statement's.
    void ReplaceWarnings(const std::vector<ErrorRecord>& warnings) {
        const std::lock_guard lock(mutex_);
        records_.resize(failures_);
        records_.insert(records_.end(), warnings.begin(), warnings.end());
    }
    void Clear() {
        const std::lock_guard lock(mutex_);
        records_.clear();
        failures_ = 0;
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
    std::size_t failures_ = 0;  // those in front; the others are warnings
};

}  // namespace tk::ado
