#pragma once

#include <string>
#include <string_view>

/// Every byte but ASCII letters, digits and -._~/ as %XX.
std::string PercentEncoded(std::string_view bytes);
