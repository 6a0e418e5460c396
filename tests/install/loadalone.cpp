// SPDX-License-Identifier: MIT
// Loads the library into a process without a host. Functions of the host are looked up when they
// are first called, so the process would end with "symbol lookup error" if loading called one. What
// loading asks of the system lies between two calls that loadcalls.sh looks for.
#include <QString>

#include <dirent.h>
#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

// What the host declares as data has to be there at once, whatever it is.
#define HOST_DATA(name) extern "C" __attribute__((visibility("default"))) void* const name[4] = {}
HOST_DATA(_ZTI9IObserver);
HOST_DATA(_ZTI9ValueBase);
HOST_DATA(_ZTI14ValueSelection);
HOST_DATA(_ZTI5ValueI7QString12FormatStringIS0_E12StreamFormatIS0_S2_EE);
HOST_DATA(_ZTI5ValueIb10FormatBoolIbE12StreamFormatIbS1_EE);
HOST_DATA(_ZTI12ValueNumericIi9FormatIntIiE12StreamFormatIiS1_EE);
HOST_DATA(_ZTI12ValueNumericId11FormatFloatIdE12StreamFormatIdS1_EE);
HOST_DATA(_ZN5Vanth8DateTime14Local_TimeZoneE);

namespace {

int entries(const char* directory)
{
    DIR* const open = opendir(directory);
    int count = 0;
    // cppcheck-suppress readdirCalled; there is one thread
    while (open && readdir(open))
        ++count;
    if (open)
        closedir(open);
    return count;
}

int fail(const char* why)
{
    std::fprintf(stderr, "%s\n", why);
    return 1;
}

} // namespace

int main()
{
    if (dlsym(RTLD_DEFAULT, "_ZN4Tree8InstanceEv"))
        return fail("There is a host after all.");
    const int files = entries("/proc/self/fd");
    const int threads = entries("/proc/self/task");
    const std::string path =
        std::string(std::getenv("STAGE")) + "/" + std::getenv("LIBDIR") + "/libmorsehandler.so.0";
    static_cast<void>(access("/loading-begins", F_OK));
    void* const library = dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL);
    static_cast<void>(access("/loading-ends", F_OK));
    if (!library)
        return fail(dlerror());
    if (entries("/proc/self/fd") != files)
        return fail("A file is open since.");
    if (entries("/proc/self/task") != threads)
        return fail("A thread is running since.");

    const auto constant = [library](const char* name) {
        const auto* const text = static_cast<const QString*>(dlsym(library, name));
        return text ? *text : QString();
    };
    if (constant("_ZN18SimpleMorseHandler3DOTE") != QLatin1String(".") ||
        constant("_ZN18SimpleMorseHandler4DASHE") != QLatin1String("-"))
        return fail("The constants are not there.");
    return dlclose(library) == 0 ? 0 : fail(dlerror());
}
