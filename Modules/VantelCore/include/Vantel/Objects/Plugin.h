// Plugin.h: the entry points of a plug-in library and the decoration that exports them.
//
//   VANTEL_PLUGIN_EXPORT void VantelPluginLoad() {
//       TypeLibrary::Get()->RegisterOperator(ParseOperatorDoc(Blur::Type(), "Docs/Operators/Blur.md", doc));
//   }
//   VANTEL_PLUGIN_EXPORT void VantelPluginUnload() {}  // optional
#pragma once

// VANTEL_PLUGIN_EXPORT
//
// Gives an entry point C linkage (so that the host finds it by its plain name) and exports it from the
// plug-in library even when the plug-in is built with hidden visibility, as it should be: everything else in
// a plug-in stays private to it.
#if defined(_WIN32)
#define VANTEL_PLUGIN_EXPORT extern "C" __declspec(dllexport)
#else
#define VANTEL_PLUGIN_EXPORT extern "C" __attribute__((visibility("default")))
#endif

// A plug-in is a shared library beside the host executable that defines VantelPluginLoad and, if it needs
// one, VantelPluginUnload. The declarations below let the compiler check a plug-in's definitions.
//
// VantelPluginLoad() is called once the library is loaded (TypeLibrary::LoadPlugin). Every type and data type
// it registers belongs to the plug-in and is removed again when the plug-in is unloaded. It may load other
// plug-ins; their types belong to them.
//
// VantelPluginUnload() is called first when the plug-in is unloaded, while its types are still registered.
// The host must have destroyed every object of the plug-in's types by then: their code is about to go away. A
// plug-in that is still loaded when the process ends is not unloaded and this entry is not called.
VANTEL_PLUGIN_EXPORT void VantelPluginLoad();
VANTEL_PLUGIN_EXPORT void VantelPluginUnload();
