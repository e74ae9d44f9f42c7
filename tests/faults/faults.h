#pragma once

#include <string>
#include <vector>

/// Makes calls to the system fail on purpose. A test that links the library `faults`
/// has its own calls and those of all its libraries pass through here; another program
/// does so with the library in LD_PRELOAD and a plan in the environment:
///
///     VESK_FAULTS="/folder write:3:ENOSPC rename:1+:EXDEV read:2:short"
///
/// Only calls on files below the given folder count. Other programs, the X server and
/// files elsewhere are not concerned.
namespace faults {

enum class Call
{
    Open,
    Stat,
    /// readdir()
    List,
    Read,
    Write,
    /// copy_file_range()
    Copy,
    Truncate,
    Sync,
    Close,
    Rename,
    Link,
    MakeFolder,
    /// Of a file.
    Unlink,
    RemoveFolder,
    /// Mode, owner, times and extended attributes.
    Attribute
};
constexpr int callCount = int(Call::Attribute) + 1;

/// Stands for an error number: the call works, but on half of the bytes.
constexpr int shortCount = -1;

struct Fault
{
    Call call;
    /// The one that fails, counted from 1 since the plan was made.
    int first;
    int error;
    /// All later ones fail too.
    bool lasts = false;
    /// Only a call below this folder fails; empty for any.
    std::string folder = {};
};

/// From now on calls below \a folder, an absolute path without links, are counted, and
/// fail as planned. A call that is to fail does nothing, but for a close, which closes.
void arm(const std::string &folder, const std::vector<Fault> &plan);
void disarm();

/// Calls of a kind since arm().
int count(Call call);
/// Calls that failed on purpose since arm().
int hits();

} // namespace faults
