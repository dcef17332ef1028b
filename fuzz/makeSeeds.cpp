/// Writes the inputs that the fuzzers start from, a folder for each target: the frames and texts of the tests.
#include "support/kinds.h"
#include "support/wire.h"
#include "tanek_vs/requestFrames.h"

#include <filesystem>
#include <fstream>
#include <iostream>

namespace {

class Folder {
public:
    explicit Folder(const std::filesystem::path &path) : m_path(path) { std::filesystem::create_directories(path); }

    void add(const Bytes &bytes)
    {
        std::ofstream file(m_path / std::to_string(m_count++), std::ios::binary);
        file.write(reinterpret_cast<const char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        if (!file)
            throw std::runtime_error("cannot write to " + m_path.string());
    }
    void add(const std::string &text) { add(Bytes(text.begin(), text.end())); }

private:
    std::filesystem::path m_path;
    int m_count = 0;
};

/// An input whose choices are made by these bytes, the first of them first: FuzzedDataProvider takes numbers from the
/// end.
Bytes withChoices(Bytes bytes, const Bytes &choices)
{
    bytes.insert(bytes.end(), choices.rbegin(), choices.rend());
    return bytes;
}

/// Good replies to every way of asking for two values of every kind, and what else a link may bring.
std::vector<Bytes> repliesForEveryKind()
{
    std::vector<Bytes> inputs;
    for (std::size_t kind = 0; kind < kinds().size(); ++kind) {
        for (unsigned char mode = 0; mode < 5; ++mode) {
            // Kind, station 1, address 200, count 2, way of asking, not wrapped.
            const Bytes choices = {static_cast<unsigned char>(kind), 0, 0, 200, 1, mode, 0};
            for (const Bytes &answer : {reply(words({0x1234, 0x1010})), reply(words({0x1234})), reply({1}),
                                        acknowledgement(), refusal(3), Bytes()})
                inputs.push_back(withChoices(answer, choices));
        }
    }
    return inputs;
}

/// What the driver sends to read and to write a few units of every kind.
std::vector<Bytes> requestsOfEveryKind()
{
    std::vector<Bytes> requests;
    for (const Kind &kind : kinds()) {
        VARIABLE wanted;
        wanted.station = 1;
        wanted.regName = QString::fromLatin1(kind.name);
        wanted.address = kind.lowest + 16;
        wanted.count = 3;
        wanted.data[0] = 0x10;
        for (const auto &build : {&buildWriteFrame, &buildReadFrame}) {
            FRAME_PRO frame;
            build(wanted, frame);
            requests.push_back(Bytes(frame.frame, frame.frame + frame.frameLength));
        }
    }
    return requests;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 3) {
        std::cerr << "usage: makeSeeds FOLDER EXAMPLE-CONFIGURATION\n";
        return 2;
    }
    const std::filesystem::path top = argv[1];
    Folder replies(top / "replies");
    for (const Bytes &input : repliesForEveryKind())
        replies.add(input);
    Folder requests(top / "requests");
    for (const Bytes &request : requestsOfEveryKind())
        requests.add(withChoices(request, {1, 0, 0, static_cast<unsigned char>(request.size() - 1)}));
    Folder texts(top / "texts");
    for (const char *text : {"D100", "X377", "D_bit100.15", "SM9000", "1#0#0#3#16"})
        texts.add(std::string(text));
    Folder calls(top / "calls"); // nothing there but choices
    for (unsigned seed = 0; seed < 20; ++seed) {
        Bytes any;
        for (unsigned i = 0; i < 60 * (seed + 1); ++i)
            any.push_back(static_cast<unsigned char>((seed + 1) * (i + 7) * 2654435761U >> 24));
        calls.add(any);
    }
    std::ifstream example(argv[2]);
    Folder(top / "configuration").add(std::string(std::istreambuf_iterator<char>(example), {}));
    return 0;
}
