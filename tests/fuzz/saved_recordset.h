// tests/fuzz/saved_recordset.h - any bytes as a saved recordset: read or refused; what is read can be walked and
// changed.
#pragma once

#include <cstdint>

#include "ado/cursor/value.h"
#include "ado/persist/recordset_file.h"

namespace tk::fuzz {

template <class Read>
void TryToRead(const std::uint8_t* data, std::size_t size, Read read) {
    ado::MemorySource source({reinterpret_cast<const char*>(data), size});
    try {
        const ado::LoadedRows loaded = read(source);
        ado::RowStore store(loaded.rows);
        ado::ApplyChanges(loaded, store);
        // Wide sets of many NULLs are walked in part: the reader is what is tried here.
        constexpr std::size_t kMostCells = 100'000;
        std::size_t cells = 0;
        for (std::size_t row = 0; row < store.CountRows(); ++row) {
            for (std::size_t i = 0; i < store.Columns().size(); ++i) {
                if (++cells > kMostCells) return;
                ado::Value value;
                store.Read(row, i, *value.Out());
                store.ReadOriginal(row, i, *value.Out());
            }
        }
    } catch (const ado::AdoError&) {}
}

}  // namespace tk::fuzz
