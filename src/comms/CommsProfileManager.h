#pragma once
#include <meridex/Export.h>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <meridex/comms/Scheme.h>
#include <meridex/frame/Index.h>
#include <meridex/frame/SharedFile.h>
#include <meridex/frame/UnreadableFiles.h>
#include <meridex/frame/XMLFactoryLease.h>
#include <meridex/frame/XmlDocument.h>
#include <meridex/frame/XmlNode.h>
#include <meridex/platform/SerialPortSource.h>
#include <meridex/platform/UserStore.h>

namespace meridex {

/// The communications map: this PC's connection devices (direct serial
/// cables, phone modems, UDP and TCP/IP links, GPRS proxies) as PROFILE
/// elements under a COMMSPROFILES root, loaded from and saved to MapFile.
///
/// The serial ports and the per-user store are given to it, so that tests can
/// run on made-up port lists; the default constructor takes this PC's. A new
/// manager starts with the default map: one direct profile per present port
/// up to MAX_COMM_PORT_SCOMM, then a UDP, a TCP/IP and a GPRS proxy profile.
/// When the manager ends it saves the map to MapFile once more, quietly.
class MERIDEX_EXPORT CommsProfileManager {
public:
    /// The display text of a direct serial cable.
    static constexpr std::string_view kDirectText = "Direct (RS232)";
    /// The display text of a phone modem.
    static constexpr std::string_view kPhoneModemText = "Phone modem (RS232)";
    /// The display text of a UDP link.
    static constexpr std::string_view kUdpText = "Network (UDP)";
    /// The display text of a TCP/IP link.
    static constexpr std::string_view kTcpText = "Network (TCP/IP)";
    /// The display text of a GPRS proxy.
    static constexpr std::string_view kGprsProxyText = "GPRS Proxy (Harvest Modem)";

    /// A manager over this PC's serial ports and the current user's real
    /// settings store (Platform::DefaultUserStore: on Linux
    /// $XDG_CONFIG_HOME/meridex, else ~/.config/meridex). It reads that store
    /// (MAX_COMM_PORT_SCOMM, the preferred and last-used ports) and the port
    /// numbering writes to it. Tests and tools that must not touch the user's
    /// settings use the constructor that takes the ports and the store, or
    /// point XDG_CONFIG_HOME at a folder of their own first.
    CommsProfileManager();
    /// A manager over the ports and the store given (null for either: this
    /// PC's, as the default constructor takes them).
    CommsProfileManager(std::shared_ptr<SerialPortSource> ports, std::shared_ptr<UserStore> store);
    CommsProfileManager(const CommsProfileManager&) = delete;
    CommsProfileManager& operator=(const CommsProfileManager&) = delete;
    /// Saves the map to MapFile once more, quietly (nothing when MapFile is "").
    ~CommsProfileManager();

    /// The map's file: the path last given to LoadXMLMapFile, SaveXMLMapFile or
    /// setMapFile ("" for none).
    const std::string& MapFile() const noexcept { return mapFile_; }
    /// Sets MapFile ("" keeps the destructor from saving).
    void setMapFile(std::string file) { mapFile_ = std::move(file); }

    /// Loads the map; a missing, malformed or foreign file gives the default
    /// map and false (a file that was there is kept aside before a save
    /// replaces it). Keys are renumbered PROFILE1, PROFILE2, ...
    bool LoadXMLMapFile(const std::string& XMLFile);
    /// Saves to XMLFile (which becomes MapFile) or to MapFile, atomically;
    /// false, with a reason in error, when it could not.
    bool SaveXMLMapFile(const std::string& XMLFile = {}, std::string* error = nullptr);
    /// The copy of someone else's version the last save kept beside the map
    /// ("NAME.conflict-..."), or "" when it kept none.
    const std::string& ConflictCopy() const noexcept { return shared_.ConflictCopy(); }

    /// Names the profiles after the ports' descriptions, which the companion
    /// program in RootPath writes to ports.txt in PortsFile::Folder(RootPath):
    /// RootPath itself unless it is read-only.
    void GetCommPortDescriptions(const std::string& RootPath);

    /// The number of PROFILE elements in the map, at most 32767.
    std::int16_t ApplicationProfileCount() const;
    /// A map profile by 1-based position or by KEY (ignoring case); null
    /// when none matches.
    XmlNode ApplicationProfile(const Index& index) const;
    /// Gives the profile a fresh KEY and appends it to the map.
    void AddApplicationProfile(const XmlNode& NewProfile);
    /// Removes the profile from the map (nothing when it is not in it).
    void RemoveApplicationProfile(const XmlNode& Profile);
    /// The COMMSPROFILES root.
    XmlNode ApplicationProfiles() const { return root_; }

    /// Appends a direct cable profile on COM PortNumber with its defaults
    /// and a fresh KEY; answers the profile.
    XmlNode AddRS232Direct(std::string_view PortNumber);
    /// As AddRS232Direct, for a phone modem.
    XmlNode AddRS232PhoneModem(std::string_view PortNumber);
    /// Appends a UDP link profile with its defaults; answers it.
    XmlNode AddUDPConnection();
    /// Appends a TCP/IP link profile with its defaults; answers it.
    XmlNode AddTCPConnection();
    /// Appends a GPRS proxy profile with its defaults; answers it.
    XmlNode AddGPRSProxyConnection();

    /// Every PROFILE child of Profiles of that TYPE and METHOD, ignoring case.
    static std::vector<XmlNode> GetDeviceProfileList(const XmlNode& Profiles, std::string_view ProfileType,
                                                     std::string_view ProfileMethod);
    /// The first PROFILE child of exactly that TYPE and METHOD (case matters here).
    static XmlNode GetDeviceProfile(const XmlNode& Profiles, std::string_view ProfileType,
                                    std::string_view ProfileMethod);
    /// The first PROFILE child whose DEFAULT is a non-zero number.
    static XmlNode GetDefaultProfile(const XmlNode& SchemeProfiles);

    /// Removes direct profiles whose port has gone and adds one for each new port.
    void CleanRS232Direct();
    /// Adapts a profile list (an element whose PROFILE children are the
    /// profiles, such as a scheme's COMMSPROFILES) to this PC's map, in place:
    /// direct cables follow this PC's ports, only this PC's phone modems stay
    /// (the numbers dialled move over to them), missing network links and the
    /// GPRS proxy are added, and the default is kept or chosen again.
    /// schemeText names the list's owner: the per-user store's preferred port
    /// for it (CommsPref) helps choose a default. A null list changes nothing.
    void MapSchemeCommsProfiles(const XmlNode& profiles, std::string_view schemeText);
    /// As above, for the scheme's CommsProfiles() and SchemeText().
    void MapSchemeCommsProfiles(Scheme& iScheme);
    /// This map's counterpart of a foreign profile, as a detached copy. Throws
    /// Error for a phone modem on an absent port when the map has no phone
    /// modem.
    XmlNode GetBestMatch(const XmlNode& Profile);
    /// Throws Error for a GPRS proxy when the map has no GPRS proxy.
    XmlNode GetExactMatch(const XmlNode& Profile);

    /// MAX_COMM_PORT_SCOMM: the highest port number looked at.
    std::int16_t MaxCommPort() const;
    /// The serial ports the manager looks at.
    SerialPortSource& Ports() const { return *ports_; }
    /// The per-user settings store the manager reads.
    UserStore& Store() const { return *store_; }

private:
    void BuildDefaultMap();
    XmlNode NewProfile(std::initializer_list<std::pair<std::string_view, std::string_view>> fields) const;
    XmlNode AppendProfile(const XmlNode& profile, std::initializer_list<std::pair<std::string_view, std::string_view>>
                                                      afterKey = {});
    XmlNode ChooseDefault(const XmlNode& schemeProfiles, const std::string& schemeText) const;

    XMLFactoryLease lease_;
    std::shared_ptr<SerialPortSource> ports_;
    std::shared_ptr<UserStore> store_;
    std::string mapFile_;
    XmlDocument document_;
    XmlNode root_;
    UnreadableFiles unreadable_;  ///< map files that could not be used, kept before a save replaces them
    SharedFile shared_;           ///< the version loaded, so a save merges what others saved since
};

}  // namespace meridex
