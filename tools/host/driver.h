/// The loaded driver together with the objects that a host lends it: control block, recipe buffer, mutex, callback.
#ifndef VSHOST_DRIVER_H
#define VSHOST_DRIVER_H

#include "config.h"
#include "driverLibrary.h"

#include <QtCore/QMutex>
#include <QtCore/QString>
#include <QtCore/QVector>

#include <functional>
#include <vector>

namespace vshost {

enum class RecipeDirection { Download, Upload };

/// One per process: the callback that the driver takes is a plain function, so there is one place it can lead to.
class Driver {
public:
    /// Station, register name and address of a value that changed, or whose write has ended.
    using ChangeHandler = std::function<void(int station, const QString &regName, int address)>;

    /// Loads the driver (`path` as for DriverLibrary) and configures it. Throws std::runtime_error.
    Driver(const std::string &path, const DriverConfig &config);
    ~Driver();
    Driver(const Driver &) = delete;
    Driver &operator=(const Driver &) = delete;

    const DriverCalls &calls() const { return m_library.calls(); }
    /// "tanek_vs 2.0.0.0 (/path/libtanek_vs.so)".
    std::string describe() const;

    /// Called on the thread of the driver's call that found the change, also while a write is being posted. Set
    /// before the threads start.
    void onChange(ChangeHandler handler);

    /// Hands the recipe over, with room for its values in the buffer.
    void planRecipe(const QVector<_RCP_VAR_PRO> &items, std::size_t words);
    std::vector<quint16> &recipeBuffer() { return m_recipeBuffer; }
    void requestRecipe(RecipeDirection direction);
    /// Whether the transfer is still going on.
    bool recipeRequested(RecipeDirection direction);

private:
    void configure();

    DriverLibrary m_library;
    DriverConfig m_config;
    std::vector<quint8> m_controlBlock;
    std::vector<quint16> m_recipeBuffer;
    QMutex m_mutex;
};

} // namespace vshost

#endif
