// Catalogue rows that the file, path and directory functions raise.
// Internal: clients see the numbers through the error list.
#ifndef ZUUTL_OS_OS_MESSAGES_H
#define ZUUTL_OS_OS_MESSAGES_H

namespace zu::msg {

// "Cannot create file '%s1'."
inline constexpr unsigned short kCannotCreateFile = 1501;
// "Cannot delete file: '%s1'."
inline constexpr unsigned short kCannotDeleteFile = 1502;
// "Not enough memory for this command."
inline constexpr unsigned short kNoMemoryForCommand = 1503;
// "Insufficient disk space."
inline constexpr unsigned short kInsufficientDiskSpace = 1506;
// "Invalid file handle."
inline constexpr unsigned short kInvalidFileHandle = 1507;
// "Access to file denied '%s1'."
inline constexpr unsigned short kFileAccessDenied = 1508;
// "File not found '%s1'."
inline constexpr unsigned short kFileNotFound = 1509;
// "Whole or part of the region has already been locked."
inline constexpr unsigned short kRegionLocked = 1512;
// "Invalid Parameter"
inline constexpr unsigned short kInvalidParameter = 1517;
// "Cannot open file '%s1'."
inline constexpr unsigned short kCannotOpenFile = 30040;
// "Error on input or output to a file."
inline constexpr unsigned short kFileIoError = 30041;
// "Cannot rename '%s1' to '%s2'."
inline constexpr unsigned short kCannotRename = 30042;
// "The maximum number of files are already open."
inline constexpr unsigned short kTooManyOpenFiles = 30045;
// "Reserved file name cannot be opened '%s1'."
inline constexpr unsigned short kReservedFileName = 30047;

}  // namespace zu::msg

#endif
