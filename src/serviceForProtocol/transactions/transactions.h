/// The transactions: which comes next, and what is done when one has ended.
#ifndef TANEK_VS_TRANSACTIONS_H
#define TANEK_VS_TRANSACTIONS_H

/// Advances the lists of work when a transaction has ended, be it finished, given up or impossible to send:
/// `transactionKind` says which, `lastTransactionFailed` how.
void dealListWhenFinish();

#endif
