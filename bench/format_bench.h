// bench/format_bench.h - the formats of util/ among its benchmarks.
#pragma once

/// Checks and registers them.
void RegisterFormats();
