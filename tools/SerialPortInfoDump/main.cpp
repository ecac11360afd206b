// SerialPortInfoDump [FOLDER]: writes FOLDER/ports.txt (FOLDER defaults to
// the folder of this program, or a per-user folder when that one may not be
// written, as for an installed program) with one line per serial port present on this
// PC: "COM", its number, "|", and the port's description. The numbers are the
// library's, so the communications map can name its profiles after the
// devices. The file is written atomically: once it exists it is complete.
#include <cstdio>
#include <string>
#include <vector>

#include <meridex/comms/PortSnapshot.h>
#include <meridex/comms/PortsFile.h>
#include <meridex/frame/FileOps.h>
#include <meridex/platform/Platform.h>

int main(int argc, char** argv) {
    using namespace meridex;
    const std::vector<std::string> arguments = Platform::Utf8Arguments(argc, argv);
    std::string folder = arguments.size() > 1 ? arguments[1] : PortsFile::Folder(Platform::ProgramFolder());
    if (folder == "-h" || folder == "--help") {
        std::printf("Usage: SerialPortInfoDump [FOLDER]\n"
                    "\n"
                    "Writes FOLDER/ports.txt, one line \"COM<n>|<description>\" per serial port present, numbered as\n"
                    "the Meridex library numbers them. The file appears complete or not at all. FOLDER defaults to\n"
                    "the program's own folder, or a per-user one ($XDG_RUNTIME_DIR/meridex, else\n"
                    "$XDG_CACHE_HOME/meridex) when that is not writable. meridex comms scan starts it.\n");
        return 0;
    }
    if (arguments.size() > 2 || folder.empty()) {
        std::fprintf(stderr, "usage: SerialPortInfoDump [FOLDER]\n");
        return 2;
    }
    std::shared_ptr<UserStore> store = Platform::DefaultUserStore();
    std::shared_ptr<SerialPortSource> source = Platform::DefaultSerialPortSource(store);
    PortSnapshot ports(*source);
    std::string text;
    for (const SerialPort& port : ports.Ports()) {
        if (!ports.IsPresent(port.number)) continue;
        std::string description = port.description;
        // One line per port, two fields: the separators cannot appear inside.
        for (char& c : description)
            if (c == '|' || c == '\n' || c == '\r') c = ' ';
        text += "COM" + std::to_string(port.number) + "|" + description + "\n";
    }
    if (!FileOps::IsSeparator(folder.back())) folder += '/';
    std::string error;
    if (!FileOps::WriteFileAtomic(folder + "ports.txt", text, &error)) {
        std::fprintf(stderr, "SerialPortInfoDump: %s\n", error.c_str());
        return 1;
    }
    return 0;
}
