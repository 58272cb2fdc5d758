// VantelCore.h: the whole public interface in one include, for hosts and plug-ins that want all of it.
//
//   #include <Vantel/VantelCore.h>
//   std::cout << Vantel::BuildInfo::GetDisplayString();
#pragma once

#include <Vantel/Export.h>

#include <Vantel/Documentation/TypeDocumentation.h>

#include <Vantel/Execution/Clock.h>
#include <Vantel/Execution/ExecutionContext.h>
#include <Vantel/Execution/Runner.h>
#include <Vantel/Execution/Tasks.h>

#include <Vantel/Objects/Access.h>
#include <Vantel/Objects/Event.h>
#include <Vantel/Objects/EventSubscription.h>
#include <Vantel/Objects/KeySettling.h>
#include <Vantel/Objects/Object.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/Path.h>
#include <Vantel/Objects/Plugin.h>
#include <Vantel/Objects/PluginFiles.h>
#include <Vantel/Objects/Ptr.h>
#include <Vantel/Objects/TypeDeclaration.h>
#include <Vantel/Objects/TypeLibrary.h>

#include <Vantel/Operators/ComponentLink.h>
#include <Vantel/Operators/Data.h>
#include <Vantel/Operators/DataBlocks.h>
#include <Vantel/Operators/DataConnection.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataInputList.h>
#include <Vantel/Operators/DataInputListImplementation.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/DataPool.h>
#include <Vantel/Operators/DataPort.h>
#include <Vantel/Operators/DataPortImplementation.h>
#include <Vantel/Operators/DataTypeInfo.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Operators/GraphImplementation.h>
#include <Vantel/Operators/GraphInputsOperator.h>
#include <Vantel/Operators/GraphOutputsOperator.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Operators/OperatorImplementation.h>
#include <Vantel/Operators/OperatorInfo.h>
#include <Vantel/Operators/ParameterConnection.h>

#include <Vantel/Parameters/BasicVectorParameter.h>
#include <Vantel/Parameters/BoolParameter.h>
#include <Vantel/Parameters/Color.h>
#include <Vantel/Parameters/ColorParameter.h>
#include <Vantel/Parameters/DataParameter.h>
#include <Vantel/Parameters/EnumParameter.h>
#include <Vantel/Parameters/FloatParameter.h>
#include <Vantel/Parameters/IntParameter.h>
#include <Vantel/Parameters/ObjectFilter.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterBundle.h>
#include <Vantel/Parameters/ParameterBundleList.h>
#include <Vantel/Parameters/ParameterData.h>
#include <Vantel/Parameters/ParameterFlag.h>
#include <Vantel/Parameters/ParameterGroup.h>
#include <Vantel/Parameters/ParameterImplementation.h>
#include <Vantel/Parameters/ParameterInfo.h>
#include <Vantel/Parameters/ParameterNode.h>
#include <Vantel/Parameters/ParameterRootGroup.h>
#include <Vantel/Parameters/ParameterScope.h>
#include <Vantel/Parameters/PtrListParameter.h>
#include <Vantel/Parameters/PtrParameter.h>
#include <Vantel/Parameters/StringParameter.h>
#include <Vantel/Parameters/Transform3DParameter.h>
#include <Vantel/Parameters/TriggerParameter.h>
#include <Vantel/Parameters/VectorIntParameter.h>
#include <Vantel/Parameters/VectorParameter.h>

#include <Vantel/Projects/BuildInfo.h>
#include <Vantel/Projects/Deserialization.h>
#include <Vantel/Projects/DroppedEntry.h>
#include <Vantel/Projects/Project.h>
#include <Vantel/Projects/ProjectFileVersion.h>
#include <Vantel/Projects/Record.h>
#include <Vantel/Projects/Serialization.h>
#include <Vantel/Projects/SuppressUpdateStructure.h>
#include <Vantel/Projects/Transaction.h>
#include <Vantel/Projects/UndoRedo.h>
#include <Vantel/Projects/Version.h>

#include <Vantel/Support/FileImportRegistry.h>
#include <Vantel/Support/Image.h>
#include <Vantel/Support/Logging.h>
#include <Vantel/Support/Resources.h>
#include <Vantel/Support/StatusEvent.h>
#include <Vantel/Support/Terminal.h>
#include <Vantel/Support/Utf8Paths.h>
