#pragma once

#include "CorvaneTransfer.h"
#include "World.h"

using Report = FCorvaneTransferReport;
/** Starts a transfer. @param tell  is told its outcome. */
using MakeTransfer = std::function<UCorvaneTransfer*(UCorvaneTransfer::FTell tell)>;

/** A transfer against what may happen. @param look  at its outcome. */
void playTransfer(World& world, const MakeTransfer& make, const std::function<void(const Report& report)>& look);
