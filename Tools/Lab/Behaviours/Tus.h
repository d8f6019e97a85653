#pragma once

#include "Lab/Plans/Behaviour.h"

namespace Lab
{
	/**
	 * A server of resumable uploads, for a place such as "/files*": POST creates one, HEAD tells how far it is, PATCH goes on, GET
	 * shows what came. Bytes count also when their connection breaks. Unlike others this behaviour has a memory, which its copies share.
	 */
	Behaviour tus();
} // namespace Lab
