#pragma once
/// @file
/// @brief Every public header of the Meridex core library in one include.

#include <meridex/Version.h>
#include <meridex/frame/Base64Encoder.h>
#include <meridex/frame/DateTime.h>
#include <meridex/frame/Error.h>
#include <meridex/frame/ErrorHandler.h>
#include <meridex/frame/FileIdentity.h>
#include <meridex/frame/FileOps.h>
#include <meridex/frame/Index.h>
#include <meridex/frame/LockNote.h>
#include <meridex/frame/Numeric.h>
#include <meridex/frame/RecordingUserInterface.h>
#include <meridex/frame/StderrUserInterface.h>
#include <meridex/frame/SharedFile.h>
#include <meridex/frame/Text.h>
#include <meridex/frame/UnreadableFiles.h>
#include <meridex/frame/UserInterface.h>
#include <meridex/frame/XMLFactoryLease.h>
#include <meridex/frame/XMLOps.h>
#include <meridex/frame/XmlDocument.h>
#include <meridex/frame/XmlNode.h>
#include <meridex/settings/Feature.h>
#include <meridex/settings/Profile.h>
#include <meridex/settings/Profiles.h>
#include <meridex/settings/Settings.h>
#include <meridex/settings/V4StandardProfiles.h>
#include <meridex/addressbook/AddressBook.h>
#include <meridex/addressbook/Site.h>
#include <meridex/addressbook/SiteGroup.h>
#include <meridex/comms/CommsProfileManager.h>
#include <meridex/comms/ImportCommsProfiles.h>
#include <meridex/comms/ImportEvents.h>
#include <meridex/comms/Scheme.h>
#include <meridex/comms/XmlSchemeFile.h>
#include <meridex/comms/PortSnapshot.h>
#include <meridex/comms/PortsFile.h>
#include <meridex/comms/ProfileXml.h>
#include <meridex/sync/FileInfo.h>
#include <meridex/sync/SchemeFileCollection.h>
#include <meridex/sync/SchemeFileItem.h>
#include <meridex/sync/SchemeFileSystem.h>
#include <meridex/sync/SchemeSyncOptions.h>
#include <meridex/sync/SyncEvents.h>
#include <meridex/sync/SyncSchemes.h>
#include <meridex/firmware/ByteLink.h>
#include <meridex/firmware/Crc.h>
#include <meridex/firmware/FirmwareFolder.h>
#include <meridex/firmware/FirmwareImage.h>
#include <meridex/firmware/FirmwareVersion.h>
#include <meridex/firmware/LinkLogger.h>
#include <meridex/firmware/Logger.h>
#include <meridex/firmware/LoggerIdentity.h>
#include <meridex/firmware/LoggerLinks.h>
#include <meridex/firmware/UpgradeEvents.h>
#include <meridex/firmware/UpgradeResult.h>
#include <meridex/platform/Links.h>
#include <meridex/platform/Platform.h>
#include <meridex/platform/SerialPortSource.h>

/// @namespace meridex
/// @brief The Meridex core library: settings and user profiles, the address book, the
/// communications map, scheme synchronisation, and the XML and platform ground under them.
