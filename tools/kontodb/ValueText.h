#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "base/Text.h"
#include "base/Value.h"

/// Values as the commands print them, in UTF-8. An unpaired surrogate becomes U+FFFD.
///
/// Numbers have a decimal point and as many digits as tell them apart; dates are "2004-06-05T13:45:00", to the
/// second; bytes are hexadecimal digits; GUIDs stand in braces.
namespace kontodb {

/// For a line of values parted by tabs: null is \N, yes/no is -1 or 0, and tab, line end, carriage return and
/// backslash are written \t \n \r \\.
void appendPlainText(std::string& line, base::TextView text);
void appendPlain(std::string& line, const base::Value& value);

/// Bytes that a unit below U+0100 takes at most, escaped or not.
inline constexpr std::size_t kMostLatinBytes = 2;

/// The short way to most texts.
/// @param room   kMostLatinBytes for each unit
/// @param units  a text of units below U+0100, one byte each
/// @return the end of what was written
char* writePlainLatin(char* room, std::span<const std::uint8_t> units);

/// The same for comma-separated values, with quotes if the text needs them.
/// @param room       kMostLatinBytes for each unit, and two
/// @param separator  ASCII
char* writeCsvLatin(char* room, std::span<const std::uint8_t> units, char separator);

/// For an object of JSON: null, true and false, numbers; all else is a string.
void appendJsonText(std::string& line, base::TextView text);
void appendJson(std::string& line, const base::Value& value);

}  // namespace kontodb
