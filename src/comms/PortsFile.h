#pragma once
#include <meridex/Export.h>
#include <string>

/// Where the port description file "ports.txt" is written by the companion
/// and read by the communications map.
namespace meridex::PortsFile {

/// The folder for ports.txt: the companion's own folder when it may be
/// written, otherwise a per-user folder ($XDG_RUNTIME_DIR/meridex, else
/// $XDG_CACHE_HOME/meridex, else ~/.cache/meridex), created when missing. An
/// installed program's folder is not writable, so its list goes there.
MERIDEX_EXPORT std::string Folder(const std::string& companionFolder);

}  // namespace meridex::PortsFile
