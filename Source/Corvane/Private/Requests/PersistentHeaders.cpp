#include "CorvaneBPLibrary.h"

void UCorvaneBPLibrary::addPersistentHTTPRequestHeader(FString InId, FString InValue)
{
	if (InId.IsEmpty())
	{
		UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary (addPersistentHTTPRequestHeader): Id not set."));
		return;
	}
	if (InValue.IsEmpty())
	{
		UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary (addPersistentHTTPRequestHeader): Value not set. id=%s"), *InId);
		return;
	}
	if (UCorvaneBPLibrary* Library = getCorvaneTarget())
	{
		Library->persistentHeaders.Add(InId, InValue);
	}
}

void UCorvaneBPLibrary::removePersistentHTTPRequestHeader(FString InId)
{
	if (InId.IsEmpty())
	{
		UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary (removePersistentHTTPRequestHeader): Id not set."));
		return;
	}
	if (UCorvaneBPLibrary* Library = getCorvaneTarget())
	{
		Library->persistentHeaders.Remove(InId);
	}
}
