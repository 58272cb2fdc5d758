// A shared library that looks like a plug-in but lacks VantelPluginLoad: loading it must be refused. It
// exports the unload entry alone, so that only the missing load entry is to blame.
#include <Vantel/Objects/Plugin.h>

VANTEL_PLUGIN_EXPORT void VantelPluginUnload() {}
