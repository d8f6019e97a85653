#include "CorvaneTransfer.h"

#include "RunningTransfers.h"

bool UCorvaneTransfer::HasPendingWork()
{
	return !CorvaneRunningTransfers::IsEmpty();
}
