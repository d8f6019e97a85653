#include "CorvaneTransfers.h"

#include "Modules/ModuleManager.h"

IMPLEMENT_MODULE(FCorvaneTransfersModule, CorvaneTransfers)
