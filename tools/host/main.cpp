/// The command line of vshost.
#include "commands.h"
#include "errors.h"
#include "exitCode.h"
#include "valueType.h"

#include "common/duration.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <iostream>

namespace {

using namespace vshost;

const char FOOTER[] = "Values and the ends of writes go to standard output, everything else to standard error.\n"
                      "Exit codes: 0 done; 1 other failure; 2 wrong command line, configuration or address;\n"
                      "3 link; 4 a station gave no valid answer; 5 a station refused.";

const char RUN_FOOTER[] =
    "Lines of standard input write values while it runs: NAME = 42, NAME = 0x2A, NAME = 4.2, NAME = on.\n"
    "A line tells how each write ended. The end of the input does not end the run; Ctrl-C and --for do.\n"
    "A station that falls silent is told and counted; exit code 4 means that none answered, 3 that the\n"
    "link never came up.";

using Command = std::function<int()>;

Milliseconds durationOf(const std::string &text)
{
    try {
        return tools::parseDuration(text);
    } catch (const std::invalid_argument &error) {
        throw CLI::ValidationError(error.what());
    }
}

void addLinkOptions(CLI::App &app, LinkOptions &link)
{
    CLI::Option_group *const group = app.add_option_group("link", "The link; one of the two is needed");
    group->add_option("--tcp", link.tcp, "Controllers behind a network address, such as 127.0.0.1:8000");
    group->add_option("--serial", link.serial, "Controllers on a serial line, such as /dev/ttyUSB0:19200,8,NONE,1");
    group->require_option(1);
    app.add_option("--station", link.station, "Number of the controller; 255 writes to all")
        ->check(CLI::Range(0, 255))
        ->capture_default_str();
    app.add_option_function<std::string>(
           "--timeout", [&link](const std::string &text) { link.timeout = durationOf(text); },
           "Time that a station may take for an answer")
        ->default_str("500ms");
    app.add_option("--retries", link.retries, "Bad or missing answers after which a station is given up")
        ->check(CLI::Range(1, 100))
        ->capture_default_str();
}

void addTypeOption(CLI::App &app, std::string &type, const char *use)
{
    app.add_option("--type", type, std::string(use) + ": " + allValueTypeNames() + " (default: by register kind)");
}

/// Where a subcommand leaves what is to be done.
struct Choice {
    GeneralOptions general;
    RunOptions run;
    ReadOptions read;
    WriteOptions write;
    RecipeOptions recipe;
    Command command;
};

/// These options are wanted behind the subcommand as much as before it.
void addGeneralOptions(CLI::App &app, GeneralOptions &general)
{
    app.add_option("--driver", general.driver, "Path of libtanek_vs.so (default: looked for near the program)");
    app.add_flag("--json", general.json, "Data as JSON, one object a line");
    app.add_flag("--trace", general.trace, "Show the bytes of both directions");
}

void addRun(CLI::App &app, Choice &choice)
{
    CLI::App *const run = app.add_subcommand("run", "Poll the values of a configuration and print their changes");
    run->add_option("FILE", choice.run.file, "Configuration")->required();
    run->add_option_function<std::string>(
        "--for", [&choice](const std::string &text) { choice.run.time = durationOf(text); },
        "End after this time, such as 10s");
    run->footer(RUN_FOOTER);
    run->callback([&choice] { choice.command = [&choice] { return runCommand(choice.general, choice.run); }; });
}

void addRead(CLI::App &app, Choice &choice)
{
    CLI::App *const read = app.add_subcommand("read", "Read values once");
    addLinkOptions(*read, choice.read.link);
    read->add_option("ADDRESS", choice.read.addresses, "Such as D100, X17, D_bit100.5")->required();
    read->add_option("-c,--count", choice.read.count, "Values from each address on")
        ->check(CLI::Range(1, 10000))
        ->capture_default_str();
    addTypeOption(*read, choice.read.type, "How to read the values");
    read->callback([&choice] { choice.command = [&choice] { return readCommand(choice.general, choice.read); }; });
}

void addWrite(CLI::App &app, Choice &choice)
{
    CLI::App *const write = app.add_subcommand("write", "Write values and wait until they are confirmed");
    addLinkOptions(*write, choice.write.link);
    write->add_option("ADDRESS=VALUE", choice.write.assignments, "Such as D100=42, D100=0x2A, M10=1")->required();
    addTypeOption(*write, choice.write.type, "What the values are");
    write->callback([&choice] { choice.command = [&choice] { return writeCommand(choice.general, choice.write); }; });
}

void addTransfer(CLI::App &recipe, Choice &choice, const char *name, const char *use, const char *csvUse,
                 int (*command)(const GeneralOptions &, const RecipeOptions &))
{
    CLI::App *const transfer = recipe.add_subcommand(name, use);
    transfer->add_option("FILE", choice.recipe.file, "Configuration")->required();
    transfer->add_option("NAME", choice.recipe.name, "Name of the recipe in it")->required();
    transfer->add_option("--csv", choice.recipe.csv, csvUse);
    transfer->callback(
        [&choice, command] { choice.command = [&choice, command] { return command(choice.general, choice.recipe); }; });
}

void addRecipe(CLI::App &app, Choice &choice)
{
    CLI::App *const recipe = app.add_subcommand("recipe", "Transfer a recipe of a configuration");
    recipe->require_subcommand(1);
    recipe->fallthrough();
    addTransfer(*recipe, choice, "download", "Write the recipe into the controllers",
                "Table with the columns name and value (default: the values in the configuration)",
                recipeDownloadCommand);
    addTransfer(*recipe, choice, "upload", "Read the recipe out of the controllers",
                "Table to write (default: standard output)", recipeUploadCommand);
}

void addRegisters(CLI::App &app, Choice &choice)
{
    CLI::App *const registers = app.add_subcommand("registers", "List the register kinds with their ranges");
    registers->callback([&choice] { choice.command = [&choice] { return registersCommand(choice.general); }; });
}

int reported(const std::exception &error, int code)
{
    std::cerr << "vshost: " << error.what() << '\n';
    return code;
}

int perform(const Command &command)
{
    try {
        return command();
    } catch (const UsageError &error) {
        return reported(error, EXIT_USAGE);
    } catch (const LinkError &error) {
        return reported(error, EXIT_LINK);
    } catch (const std::exception &error) {
        return reported(error, EXIT_OTHER);
    }
}

} // namespace

int main(int argc, char **argv)
{
    Choice choice;
    CLI::App app("vshost, the reference host of the tanek VS driver", "vshost");
    app.require_subcommand(1);
    app.fallthrough();
    app.footer(FOOTER);
    addGeneralOptions(app, choice.general);
    addRun(app, choice);
    addRead(app, choice);
    addWrite(app, choice);
    addRecipe(app, choice);
    addRegisters(app, choice);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? EXIT_OK : EXIT_USAGE;
    }
    return perform(choice.command);
}
