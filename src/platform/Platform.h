#pragma once
#include <meridex/Export.h>
#include <memory>
#include <string>
#include <vector>

#include <meridex/platform/SerialPortSource.h>
#include <meridex/platform/UserStore.h>

/// What the library asks of the operating system, in one place; each
/// platform's folder supplies these.
namespace meridex::Platform {

/// The current user's settings store.
MERIDEX_EXPORT std::shared_ptr<UserStore> DefaultUserStore();
/// This PC's serial ports, numbered with the help of store (where port
/// numbers are pinned and remembered).
MERIDEX_EXPORT std::shared_ptr<SerialPortSource> DefaultSerialPortSource(std::shared_ptr<UserStore> store);
/// The file name of the companion program that writes ports.txt.
MERIDEX_EXPORT std::string CompanionProgramName();
/// The Windows folder with a separator appended ("C:\\WINDOWS\\"); on Linux,
/// where the system's own configuration lives ("/etc/").
MERIDEX_EXPORT std::string GetWindowsFolder();
/// The program's command-line arguments in UTF-8, the program's name first
/// (Windows hands argv over in the ANSI code page; the wide command line is
/// read instead). Console output is switched to UTF-8 as well.
MERIDEX_EXPORT std::vector<std::string> Utf8Arguments(int argc, char** argv);
/// The folder of the running program, with no trailing separator ("" when
/// the platform cannot tell).
MERIDEX_EXPORT std::string ProgramFolder();
/// The folder of the file holding this library (the program's own file when
/// the library is linked in statically), with no trailing separator.
MERIDEX_EXPORT std::string LibraryFolder();

}  // namespace meridex::Platform
