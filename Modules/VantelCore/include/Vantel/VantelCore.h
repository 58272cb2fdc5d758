// VantelCore.h: the whole public interface in one include, for hosts and plug-ins that want all of it.
//
//   #include <Vantel/VantelCore.h>
//   std::cout << Vantel::BuildInfo::GetDisplayString();
#pragma once

#include <Vantel/Export.h>

#include <Vantel/Execution/Tasks.h>

#include <Vantel/Objects/Access.h>
#include <Vantel/Objects/Event.h>
#include <Vantel/Objects/EventSubscription.h>
#include <Vantel/Objects/KeySettling.h>
#include <Vantel/Objects/Object.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/Path.h>
#include <Vantel/Objects/Ptr.h>

#include <Vantel/Operators/ComponentLink.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Operators/OperatorImplementation.h>
#include <Vantel/Operators/ParameterConnection.h>

#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterBundle.h>
#include <Vantel/Parameters/ParameterBundleList.h>
#include <Vantel/Parameters/ParameterData.h>
#include <Vantel/Parameters/ParameterFlag.h>
#include <Vantel/Parameters/ParameterGroup.h>
#include <Vantel/Parameters/ParameterImplementation.h>
#include <Vantel/Parameters/ParameterNode.h>
#include <Vantel/Parameters/ParameterRootGroup.h>
#include <Vantel/Parameters/ParameterScope.h>

#include <Vantel/Projects/BuildInfo.h>
#include <Vantel/Projects/Record.h>
#include <Vantel/Projects/Serialization.h>
#include <Vantel/Projects/SuppressUpdateStructure.h>
#include <Vantel/Projects/Transaction.h>
#include <Vantel/Projects/Version.h>

#include <Vantel/Support/Image.h>
#include <Vantel/Support/Logging.h>
#include <Vantel/Support/StatusEvent.h>
