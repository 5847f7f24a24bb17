// tools/tkdb/rowset.h - a recordset object of the library's, released at the end.
#pragma once

#include <tkkernel/tkkernel.h>

namespace tk::tools {

class Rowset {
public:
    /// @param rowset  taken over; may be null
    explicit Rowset(IDispatch* rowset) : rowset_(rowset) {}
    Rowset(const Rowset&) = delete;
    Rowset& operator=(const Rowset&) = delete;
    ~Rowset() {
        if (rowset_ != nullptr) rowset_->Release();
    }
    IDispatch* Get() const { return rowset_; }

private:
    IDispatch* rowset_;
};

}  // namespace tk::tools
