// What Windows calls when a process loads or leaves the library.
#include "platform/windows/windows.h"

#include "platform/system.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        DisableThreadLibraryCalls(module);
        kxstr::platform::process_heap(); // taken now, for the life of the process
    }
    return TRUE;
}
