/// `vshost recipe`: has the driver carry a recipe from the configuration or a table to the controllers, or back.
#include "errors.h"
#include "oneShot.h"
#include "recipe.h"

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <sstream>

namespace vshost {

namespace {

/// The driver ends a transfer at the first block that is given up, and says no more than that it has ended.
class Transfer : public TransactionListener {
public:
    Transfer(const RegisterKinds &kinds, Verdict &verdict) : m_kinds(kinds), m_verdict(verdict) {}

    void accepted(const FRAME_PRO &frame) override
    {
        const bool wide = m_kinds.find(frame.variable.regName.toStdString())->size == KindSize::DoubleWord;
        m_words += static_cast<std::size_t>(frame.variable.count) * (wide ? 2 : 1);
    }
    void givenUp(const FRAME_PRO &frame, const Failure &failure) override
    {
        m_verdict.failed(failure);
        Printer::notice("the transfer ended early: " + describe(frame.variable.station, failure));
    }

    std::size_t words() const { return m_words; }

private:
    const RegisterKinds &m_kinds;
    Verdict &m_verdict;
    std::size_t m_words = 0;
};

const RecipeConfig &recipeNamed(const Config &config, const RecipeOptions &options)
{
    const auto found = std::find_if(config.recipes.begin(), config.recipes.end(),
                                    [&options](const RecipeConfig &recipe) { return recipe.name == options.name; });
    if (found != config.recipes.end())
        return *found;
    std::string known;
    for (const RecipeConfig &recipe : config.recipes)
        known += (known.empty() ? "" : ", ") + recipe.name;
    throw UsageError(fmt::format("{}: there is no recipe '{}'; there {}", options.file, options.name,
                                 known.empty() ? "are none" : "are: " + known));
}

std::vector<CsvRow> readTable(const std::string &fileName)
{
    std::ifstream file(fileName);
    std::ostringstream text;
    if (!file || !(text << file.rdbuf()))
        throw UsageError(fileName + ": the file cannot be read, or is empty");
    try {
        return parseCsv(text.str());
    } catch (const UsageError &error) {
        throw UsageError(fileName + ": " + error.what());
    }
}

void writeTable(Host &host, const std::string &fileName, const std::string &text)
{
    if (fileName.empty()) {
        host.printer.data(text);
        return;
    }
    std::ofstream file(fileName);
    if (!(file << text << std::flush))
        throw std::runtime_error(fileName + ": the file cannot be written");
}

/// A session with one recipe, from the file to the plan.
class RecipeSession {
public:
    RecipeSession(const GeneralOptions &general, const RecipeOptions &options)
        : m_trace(general.trace), m_config(loadConfig(options.file)), m_host(general, m_config.driver),
          m_recipe(recipeNamed(m_config, options), m_host.kinds)
    {
        m_host.driver.planRecipe(m_recipe.plan(m_config.driver.instance), m_recipe.words());
    }

    Host &host() { return m_host; }
    Recipe &recipe() { return m_recipe; }
    std::vector<quint16> &buffer() { return m_host.driver.recipeBuffer(); }

    ExitCode transfer(RecipeDirection direction)
    {
        Verdict verdict;
        Transfer transfer(m_host.kinds, verdict);
        m_host.driver.requestRecipe(direction);
        runUntil(m_host, m_config.link, m_trace, transfer, verdict,
                 [&] { return !m_host.driver.recipeRequested(direction); });
        if (verdict.exitCode() == EXIT_OK && transfer.words() != m_recipe.words()) {
            Printer::notice(fmt::format("the driver transferred {} of {} words", transfer.words(), m_recipe.words()));
            verdict.failed(EXIT_OTHER);
        }
        return verdict.exitCode();
    }

private:
    bool m_trace;
    Config m_config;
    Host m_host;
    Recipe m_recipe;
};

} // namespace

int recipeDownloadCommand(const GeneralOptions &general, const RecipeOptions &options)
{
    RecipeSession session(general, options);
    if (!options.csv.empty())
        session.recipe().takeValues(readTable(options.csv), options.csv);
    session.recipe().store(session.buffer());
    const ExitCode code = session.transfer(RecipeDirection::Download);
    if (code == EXIT_OK) {
        Printer::notice(
            fmt::format("recipe '{}' downloaded: {} values", options.name, session.recipe().items().size()));
    }
    return code;
}

int recipeUploadCommand(const GeneralOptions &general, const RecipeOptions &options)
{
    RecipeSession session(general, options);
    const ExitCode code = session.transfer(RecipeDirection::Upload);
    if (code == EXIT_OK) {
        writeTable(session.host(), options.csv, session.recipe().table(session.buffer()));
        Printer::notice(fmt::format("recipe '{}' uploaded: {} values", options.name, session.recipe().items().size()));
    }
    return code;
}

} // namespace vshost
