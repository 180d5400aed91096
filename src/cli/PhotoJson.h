// Photos and their metadata as JSON for programs: times as ISO 8601, absent values left out. Texts
// may hold bytes that are no UTF-8; the writer replaces them.
#pragma once

#include "library/PhotoInfo.h"
#include "library/PhotoMeta.h"

#include <nlohmann/json.hpp>

#include <string>

namespace kelvaro {

std::string isoTime(FileTime time);           // "2024-03-09T09:30:00Z"
std::string isoTime(const CaptureTime& time); // "2024-03-09T18:30:00+09:00", as the file tells it
nlohmann::ordered_json toJson(const PhotoMeta& meta);
nlohmann::ordered_json toJson(const PhotoInfo& info);
// On standard output, indented, with a line end.
void print(const nlohmann::ordered_json& document);

} // namespace kelvaro
