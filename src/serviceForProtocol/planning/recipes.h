/// The recipe plan, and how its blocks become requests.
#ifndef TANEK_VS_RECIPES_H
#define TANEK_VS_RECIPES_H

#include "tanek_vs/records.h"

/// Whether a download of the block would need words in front of the recipe buffer.
bool takesValuesFromOutside(const _RCP_VAR_PRO &block);

/// Makes `request` that of the block; its `hostContext` stays. With `withValues` not 0, its data are the block's words
/// of the recipe buffer, else zeros. Blocks of bits carry no values.
void rcpAddrToVar(const _RCP_VAR_PRO &block, VARIABLE &request, int withValues);

#endif
