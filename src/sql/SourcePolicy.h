#pragma once

namespace salvor {

/// How a database file is opened.
enum class SourcePolicy {
    /// SQLite's ordinary open: read-write, created when missing.
    Ordinary,
    /// Evidence: read-only and immutable; a missing file is one that does not open, and every
    /// statement runs under guards (reading only, one statement per text, a step budget).
    Protected,
};

}  // namespace salvor
