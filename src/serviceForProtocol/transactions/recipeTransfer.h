/// Carries recipes: turns blocks of the plan into requests, and uploaded blocks into words of the host's buffer.
#ifndef TANEK_VS_RECIPE_TRANSFER_H
#define TANEK_VS_RECIPE_TRANSFER_H

#include "model/protocol.h"
#include "model/registerTable.h"

#include <tanek_vs/records.h>

#include <QtCore/QtGlobal>

/// The transfer that the host asks for, as the kind of its transactions; TransactionIdle: none.
TransactionKind requestedTransfer();

/// Makes the next block of that transfer the current request: the first block, unless the transaction before this one
/// was of the same transfer and plan.
/// @return false when there is none; the transfer is ended then.
bool nextRecipeBlock(TransactionKind transfer);

/// Whether the current block's values can be taken from the recipe buffer: not from in front of it.
bool hasValuesInBuffer();

/// Goes on behind the block whose transaction has ended, or ends the transfer: after the last block, and where one was
/// given up. A block of a plan that was replaced meanwhile moves nothing, so that the new plan is carried from its
/// start.
void finishRecipeBlock();

/// Makes `request` that of the block; its `hostContext` stays. With `withValues` not 0, its data are the block's words
/// of the recipe buffer, else zeros. Blocks of bits carry no values.
void rcpAddrToVar(const _RCP_VAR_PRO &block, VARIABLE &request, int withValues);

/// Fills the words of the recipe buffer that belong to the items of the current block, and reports each, unless the
/// plan was replaced since the block was asked for.
/// @param data that of the block's units.
void fillRecipeBuffer(const RegisterKind &kind, const VARIABLE &block, const quint8 *data);

#endif
