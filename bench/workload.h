#pragma once

#include <string>

namespace bench {

/// A C++-like text of about \a bytes bytes, the same in every run: comments of
/// both kinds, directives, strings, numbers, indented code. Lines end with LF.
std::string sourceText(size_t bytes);

/// The path of a file with sourceText(\a megabytes million bytes), written on
/// first use below the temporary folder; or the file that VESK_BENCH_FILE names.
std::string sourceFile(int megabytes);

/// The same without comments of several lines, so that nothing closes one that
/// is opened at its top.
std::string openFile(int megabytes);

/// One line of \a bytes bytes of code, as such a file.
std::string longLineFile(size_t bytes);

/// A file of \a bytes bytes in which the word "needle" stands \a hits times.
std::string needleFile(size_t bytes, int hits);

/// Highest resident size of this process so far, in bytes.
double peakMemory();

} // namespace bench
