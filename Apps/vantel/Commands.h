// Commands.h: one function per command of `vantel`; each returns its exit code or throws HostError.
#pragma once

#include "Arguments.h"

namespace VantelHost {

int RunCommand(const Arguments& arguments);
int CheckCommand(const Arguments& arguments);
int UpgradeCommand(const Arguments& arguments);
int TypesCommand(const Arguments& arguments);
int DocCommand(const Arguments& arguments);
int GraphCommand(const Arguments& arguments);
int EditCommand(const Arguments& arguments);

}  // namespace VantelHost
