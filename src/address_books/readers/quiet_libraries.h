// What the libraries behind the readers would print.
#pragma once

namespace kelmio {

/// They remark on every flaw of a file, and a damaged one has many: from here on nothing of that is printed. Before any
/// other call to them.
void QuietLibraries();

} // namespace kelmio
