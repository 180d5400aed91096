// Where tests and benches find what they did not make themselves.
#pragma once

#include <filesystem>

namespace kelvaro::places {

// The top folder of this checkout.
std::filesystem::path source();
// Real photos: the folder that KELVARO_PHOTOS names, else shared/photos beside the checkout. It may
// not be there.
std::filesystem::path photos();

} // namespace kelvaro::places
