// SPDX-License-Identifier: MIT
#pragma once

/// ESTATEBOOK_QUICK_THREAD_LOCAL: thread_local for the few small variables that nearly every write reads.
///
/// They are found at a fixed distance from the thread's own block, without a call. Loading the library late takes them
/// from a small reserve that the C library keeps for this, so they are pointers and numbers only.

#define ESTATEBOOK_QUICK_THREAD_LOCAL __attribute__((tls_model("initial-exec"))) thread_local
