#pragma once

#include <QString>

// What every fuzz target needs before its first input: a home of its own and an application
// object. A fuzzer runs millions of inputs, some of which make the code read and write settings
// and data files, so HOME and the XDG folders point into a temporary directory that is made here
// (and removed when the fuzzer exits normally); a fuzzer never touches the real user's settings.
// Qt's warnings are dropped, since a loader warns about most hostile inputs and printing them
// would slow the run to a crawl; a fatal message still aborts.
class FuzzEnvironment {
public:
    // Once, from LLVMFuzzerInitialize.
    static void setUp();
    static QString home();
    // A new empty folder inside the temporary home.
    static QString makeFolder(const QString &name);
    // A property every input must keep: when it does not hold, the run stops with the input
    // saved, as for a crash.
    static void check(bool condition);
};
