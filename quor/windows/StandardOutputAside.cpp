#include "../OutputFile.h"

#include <io.h>
#include <windows.h>

namespace quor {

StandardOutputAside::StandardOutputAside() : kept_(_dup(_fileno(stdout)))
{
    std::fflush(stdout);
    if (kept_ < 0) return;
    // Programs that a script starts must not hold what was standard output open.
    SetHandleInformation(reinterpret_cast<HANDLE>(_get_osfhandle(kept_)), HANDLE_FLAG_INHERIT, 0);
    _dup2(_fileno(stderr), _fileno(stdout));
}

StandardOutputAside::~StandardOutputAside()
{
    std::fflush(stdout);
    if (kept_ < 0) return;
    _dup2(kept_, _fileno(stdout));
    _close(kept_);
}

} // namespace quor
