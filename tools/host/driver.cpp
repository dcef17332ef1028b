#include "driver.h"

#include <QtCore/QString>
#include <QtCore/QVector>

#include <fmt/format.h>

#include <stdexcept>

namespace vshost {

namespace {

/// Bytes of the control block that ask for a transfer, and the size that holds both.
constexpr std::size_t DOWNLOAD_REQUEST = 60115;
constexpr std::size_t UPLOAD_REQUEST = 60116;
constexpr std::size_t CONTROL_BLOCK_SIZE = 60117;

/// The driver's answer when the host is to poll it.
constexpr int POLLED_BY_HOST = 0;

/// Reports that name no value: the end of condition reads and the progress of a recipe.
constexpr int NO_STATION = -1;

Driver::ChangeHandler changeHandler;

int reportChange(int, int station, QString &regName, int address)
{
    if (station != NO_STATION && changeHandler)
        changeHandler(station, regName, address);
    return 0;
}

std::size_t requestByte(RecipeDirection direction)
{
    return direction == RecipeDirection::Download ? DOWNLOAD_REQUEST : UPLOAD_REQUEST;
}

/// The third number is one that the driver passes over.
std::string propertyText(const DriverConfig &config)
{
    return fmt::format("{}#{}#0#{}#{}", config.instance, config.cacheOnlyWrites ? 1 : 0, config.retryLimit,
                       config.mergeGap);
}

} // namespace

Driver::Driver(const std::string &path, const DriverConfig &config)
    : m_library(path), m_config(config), m_controlBlock(CONTROL_BLOCK_SIZE), m_recipeBuffer(1)
{
    int type = -1;
    calls().getProtocolType(&type);
    if (type != POLLED_BY_HOST)
        throw std::runtime_error(m_library.path() + " is not a driver that the host polls");
    configure();
    calls().setAddrValueChangeCallBack(&reportChange);
}

Driver::~Driver()
{
    calls().setAddrValueChangeCallBack(nullptr);
    changeHandler = nullptr;
}

std::string Driver::describe() const
{
    return fmt::format("driver {} ({})", calls().getVersion().toStdString(), m_library.path());
}

void Driver::onChange(ChangeHandler handler) { changeHandler = std::move(handler); }

void Driver::configure()
{
    int result = 0;
    calls().initProperty(m_controlBlock.data(), nullptr, m_recipeBuffer.data(), &result, propertyText(m_config).c_str(),
                         &m_mutex);
}

/// The buffer moves when it grows, so that the driver has to be told anew.
void Driver::planRecipe(const QVector<_RCP_VAR_PRO> &items, std::size_t words)
{
    m_recipeBuffer.assign(words, 0);
    configure();
    calls().setRcpAddress(&items);
}

void Driver::requestRecipe(RecipeDirection direction)
{
    m_mutex.lock();
    m_controlBlock[requestByte(direction)] = 1;
    m_mutex.unlock();
}

bool Driver::recipeRequested(RecipeDirection direction)
{
    m_mutex.lock();
    const bool requested = m_controlBlock[requestByte(direction)] != 0;
    m_mutex.unlock();
    return requested;
}

} // namespace vshost
