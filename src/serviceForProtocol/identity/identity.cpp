/// Who the driver is, and its configuration by the host.
#include "model/asciiNumber.h"
#include "model/protocol.h"
#include "model/registerTable.h"
#include "model/wrappingInt.h"
#include "serviceForProtocol/cache/unitStore.h"
#include "serviceForProtocol/requests/writeQueue.h"

#include <tanek_vs/driver.h>

#include <QtCore/QChar>
#include <QtCore/QMutex>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QtGlobal>

namespace {

/// Numbers in a property text; further ones are ignored.
const int PROPERTY_NUMBERS = 5;
const int BITS_PER_GAP_UNIT = 8;

void readSettings(const QString &property)
{
    const QStringList parts = property.split(QLatin1Char('#'));
    if (parts.size() < PROPERTY_NUMBERS)
        return;
    driver.instanceId = numberOrZero(parts.at(0));
    driver.cacheOnlyWrites = numberOrZero(parts.at(1));
    driver.retryLimit = numberOrZero(parts.at(3));
    driver.mergeGap = numberOrZero(parts.at(4));
}

void dropWork()
{
    driver.readBlocks.clear();
    driver.nextReadBlock = 0;
    forgetWrites();
    driver.conditionReads.clear();
    forgetUnits();
    driver.frameQueue.clear();
    driver.transactionKind = TransactionIdle;
    driver.burstCount = 0;
    driver.retryCount = 0;
    driver.lastTransactionFailed = 0;
}

} // namespace

void intf_getProtocolType(int *type)
{
    if (type)
        *type = 0;
}

QString intf_getVersion() { return PROCOTOL_VERSION; }

void intf_getDriverParameter(QString &text)
{
    QStringList parts;
    parts << QString::number(0) << PROCOTOL_DEFALT_COM_PAR << QString::number(1) << QString::number(0)
          << PROCOTOL_DEFALT_IP_PAR << PROCOTOL_NAME << QStringList(driver.regNames);
    text = parts.join(QString::fromLatin1(","));
}

int intf_initProperty(quint8 *hostControlBlock, void *, quint16 *recipeBuffer, int *result, const char *property,
                      QMutex *hostMutex)
{
    if (result)
        *result = 0;
    readSettings(QString::fromLatin1(property));
    driver.hostControlBlock = hostControlBlock;
    driver.recipeBuffer = recipeBuffer;
    driver.hostMutex = hostMutex;
    dropWork();
    driver.maxWordsPerWrite = driver.mergeGap;
    driver.maxBitsPerWrite = wrappingProduct(BITS_PER_GAP_UNIT, driver.mergeGap);
    return 1;
}

void intf_getDriverPropertyPage(QString &text) { text = PROCOTOL_PAR_HMI_SET_MODE; }

void intf_SetDriverPropertyPage(const QString &text) { driver.propertyPageText = text; }

void intf_setAddrValueChangeCallBack(ValueChangeCallback callback) { driver.valueChangeCallback = callback; }
