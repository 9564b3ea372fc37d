// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <unordered_set>
#include <vector>

namespace Common {

/// Small services that every folder uses. All functions are static and may be called from any thread; none throws but
/// where memory ends. Texts are UTF-8.
class Utils
{
public:
    // --- Process (Utils.cpp) ---
    /// The function that is called on a fatal fault; see CrashHandler.
    static void registerCrashHandler(void (*handler)());
    static void setupCrashHandler();
    /// Raises the priority of all threads that exist; where the system refuses, it goes on silently.
    static void setProcessHighPriority();
    /// Id of the calling thread, as the system's tools show it.
    static std::string getThreadIdString();

    // --- Sockets and interfaces (UtilsNetwork.cpp) ---
    /// @return 0 on success, the system's error number on failure
    static int setReceiveTimeout(int socket, int ms);
    /// @param size  in KiB: 1024 asks for 1 MiB
    /// @return non-zero on success
    static int setSocketSendBufferSize(int socket, int size);
    /// Bytes as the system counts them, -1 on failure.
    static int getSocketReceiveBufferSize(int socket);
    static int getSocketSendBufferSize(int socket);
    /// Addresses of all active IPv4 interfaces, loopback left out; in a loopback network that network's host 1 alone.
    static std::vector<std::string> getAllLocalIPv4s();
    /// Moves getAllLocalIPv4s() to loopback: @p prefix is "127.x.y". An empty one moves it back.
    static void setLoopbackNetwork(const std::string &prefix);

    // --- Send keys (UtilsKey.cpp) ---
    /// Builds a send key; unique for each triple.
    static unsigned long long makeUtilsKey(unsigned short kind, unsigned short channel, unsigned int discriminator);
    static void parseUtilsKey(unsigned long long key, unsigned short &kind, unsigned short &channel);

    // --- Files (UtilsFile.cpp) ---
    /// Makes sure that the directory of a file path exists; false if it cannot be done.
    static bool ensureFilePath(const std::string &path);
    /// True for a file, false for a directory or nothing.
    static bool fileExists(const std::string &path);

    // --- Time and text (UtilsTime.cpp) ---
    /// Monotonic milliseconds, cheap.
    static unsigned long long getCurrentMillisecondsFast();
    /// Local time as "2025-05-07 14:30:22.123". The text lives in the calling thread until its next call.
    static const char *getCurrentTimeStringFast();
    /// Local time as "Wed May 07 14:30:22.123 2025", English whatever the locale; lifetime as above.
    static const char *getASCHeaderDateString();
    /// Pairs of upper-case digits with a blank between them.
    static std::string bytesToHexStringUpper(const unsigned char *data, unsigned long long size);

    // --- Signals in frame data (UtilsBits.cpp) ---
    // Bit numbers count as in a DBC file: bit 0 is the lowest of byte 0, bit 15 the highest of byte 1. A signal has 1
    // to 64 bits. Reading: bits beyond the data read as zero, a bit length of 0 or above 64 reads as 0. Writing: the
    // value is cut to the signal's length; a signal that does not lie wholly within the data returns non-zero and
    // changes nothing.

    /// Intel order: the start bit is the least significant one.
    static unsigned long long getUnsignedSignalValueByLSB(const unsigned char *data, unsigned char dataLength,
                                                          unsigned short startBit, unsigned short bitLength);
    /// Motorola order: the start bit is the most significant one.
    static unsigned long long getUnsignedSignalValueByMSB(const unsigned char *data, unsigned char dataLength,
                                                          unsigned short startBit, unsigned short bitLength);
    static int setSignalValueByLSB(unsigned char *data, unsigned char dataLength, unsigned short startBit,
                                   unsigned short bitLength, unsigned long long value);
    static int setSignalValueByMSB(unsigned char *data, unsigned char dataLength, unsigned short startBit,
                                   unsigned short bitLength, unsigned long long value);
    /// Number of the signal's least significant bit.
    static unsigned short getSignalActualStartBit(unsigned short startBit, unsigned short bitLength, bool motorola);
    /// Numbers of all bits that the signal occupies; numbers beyond 65535 are left out.
    static std::unordered_set<unsigned short> getSignalActualSetBits(unsigned short startBit, unsigned short bitLength,
                                                                     bool motorola);
};

} // namespace Common
