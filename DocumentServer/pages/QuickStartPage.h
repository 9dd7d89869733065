#pragma once

#include "Page.h"

namespace documentserver
{

/// What a new user should know, in the language that the address or the browser asks for.
Reply quickStartPage(const PageRequest &request);

} // namespace documentserver
