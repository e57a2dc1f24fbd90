#include "TaVekInspect/plan/quiet.h"

Quiet::Quiet() : out_(std::cout.rdbuf(&nowhere_)), err_(std::cerr.rdbuf(&nowhere_)) {
    static_cast<void>(zApiLib_AddLogHandler(keep, this));
}

Quiet::~Quiet() {
    static_cast<void>(zApiLib_RemoveLogHandler(keep, this));
    std::cerr.rdbuf(err_);
    std::cout.rdbuf(out_);
}

zStatus Quiet::keep(void* receiver, const zLogEntry* entry) {
    static_cast<Quiet*>(receiver)->entry_ = entry->message;
    return zStatus_Success;
}
