// VantelCore.h: the whole public interface in one include, for hosts and plug-ins that want all of it.
//
//   #include <Vantel/VantelCore.h>
//   std::cout << Vantel::BuildInfo::GetDisplayString();
#pragma once

#include <Vantel/Export.h>

#include <Vantel/Objects/Access.h>
#include <Vantel/Objects/Event.h>
#include <Vantel/Objects/EventSubscription.h>
#include <Vantel/Objects/KeySettling.h>
#include <Vantel/Objects/Object.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/Path.h>
#include <Vantel/Objects/Ptr.h>

#include <Vantel/Projects/BuildInfo.h>
#include <Vantel/Projects/Version.h>

#include <Vantel/Support/Logging.h>
#include <Vantel/Support/StatusEvent.h>
