// End-to-end tests of `vantel edit`: a real session driven over its socket by a scripted client.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "EditClient.h"
#include "HostFiles.h"

namespace {

namespace fs = std::filesystem;
using EditTesting::EditProcess;
using EditTesting::EventReader;
using nlohmann::json;

const fs::path kHost = VANTEL_HOST_PATH;
const fs::path kExamples = VANTEL_EXAMPLES_DIR;

using HostTesting::ReadFile;

// The bundled example in a folder of its own, so that saving writes nowhere else.
class EditSession : public ::testing::Test {
protected:
    EditSession() {
        folder = fs::temp_directory_path() / ("vantel-edit-" + std::to_string(std::random_device()()));
        fs::create_directories(folder);
        fs::copy(kExamples / "ImagePipeline", folder, fs::copy_options::recursive);
        project = folder / "ImagePipeline.json";
    }
    ~EditSession() override { fs::remove_all(folder); }

    // Saves and returns the bytes written.
    std::string Save(EditProcess& session) {
        EXPECT_EQ(session.Request({{"type", "save"}})["ok"], true);
        return ReadFile(project);
    }

    // Undoes the whole history, which must give `before` back and leave nothing to undo, then redoes it all,
    // which must give `after` back.
    void ExpectHistoryRoundTrip(EditProcess& session, const std::string& before, const std::string& after) {
        const std::size_t steps = Ok(session, {{"type", "getHistory"}})["undo"].size();
        for (std::size_t i = 0; i < steps; ++i) {
            ASSERT_EQ(Ok(session, {{"type", "undo"}})["replayed"], true);
        }
        EXPECT_EQ(session.Request({{"type", "undo"}})["error"], "there is nothing to undo");
        EXPECT_EQ(Save(session), before);
        for (std::size_t i = 0; i < steps; ++i) {
            ASSERT_EQ(Ok(session, {{"type", "redo"}})["replayed"], true);
        }
        EXPECT_EQ(Save(session), after);
    }

    static json Ok(EditProcess& session, const json& request) {
        json reply = session.Request(request);
        EXPECT_EQ(reply["ok"], true) << request.dump() << " -> " << reply.dump();
        return reply["result"];
    }

    // The first item of `list` whose `key` is `value`, or null.
    static json FindIn(const json& list, const std::string& key, const std::string& value) {
        const auto found =
            std::find_if(list.begin(), list.end(), [&](const json& item) { return item[key] == value; });
        return found == list.end() ? json() : *found;
    }

    static std::string FindOperator(EditProcess& session, const std::string& type) {
        const json found = FindIn(Ok(session, {{"type", "getGraph"}})["operators"], "type", type);
        return found.is_null() ? "" : found["path"];
    }

    fs::path folder;
    fs::path project;
};

TEST_F(EditSession, EditsRunLiveAndUndoRedoGiveTheSavedBytesBack) {
    EditProcess session(kHost, project);
    EventReader events(session.GetPort(), session.GetToken());
    const std::string before = Save(session);

    // An editor's "add node", then a connection into it and a value that changes what the frames compute.
    const std::string sum = Ok(session, {{"type", "addOperator"},
                                         {"operatorType", "Standard.Math.Arithmetic"},
                                         {"name", "Sum"},
                                         {"position", {40, 80}}})["path"];
    const std::string oscillator = FindOperator(session, "Standard.Math.Oscillator");
    ASSERT_FALSE(oscillator.empty());
    Ok(session, {{"type", "connectData"}, {"output", oscillator + "/Signal"}, {"input", sum + "/A"}});
    Ok(session, {{"type", "setValue"}, {"path", sum + "/Value B"}, {"value", 1000.0}});
    const json update = events.WaitFor(
        [&](const json& event) {
            return event["event"] == "frame" && event["values"].contains(sum + "/Value") &&
                   event["values"][sum + "/Value"].get<double>() > 998.0;
        },
        10.0);
    ASSERT_FALSE(update.is_null()) << "no frame showed the sum with the new value";
    EXPECT_NE(std::find(update["ran"].begin(), update["ran"].end(), sum), update["ran"].end())
        << update["ran"];
    const std::string after = Save(session);
    EXPECT_NE(after, before);

    const json history = Ok(session, {{"type", "getHistory"}});
    ASSERT_EQ(history["undo"].size(), 3u);
    EXPECT_EQ(history["undo"][1]["records"][0], "Connect " + oscillator + "/Signal to " + sum + "/A");
    EXPECT_EQ(history["undo"][0]["name"], "Set Value B");  // the next to undo comes first
    ExpectHistoryRoundTrip(session, before, after);
    EXPECT_EQ(session.Stop(), 0);

    const std::string check = "cd '" + folder.string() + "' && '" + kHost.string() + "' check " +
                              project.string() + " >/dev/null 2>&1";
    EXPECT_EQ(std::system(check.c_str()), 0);
}

TEST_F(EditSession, PastedOperatorsGetNewKeysAndKeepTheirInnerConnectionsAndABatchIsOneStep) {
    EditProcess session(kHost, project);
    const std::string before = Save(session);
    const json graph = Ok(session, {{"type", "getGraph"}});
    const std::vector<std::string> chosen = {FindOperator(session, "Standard.Image.LoadImage"),
                                             FindOperator(session, "Vantel.General.Graph"),
                                             FindOperator(session, "Standard.Math.Oscillator")};
    const json clipboard = Ok(session, {{"type", "copy"}, {"paths", chosen}});
    ASSERT_EQ(clipboard["operators"].size(), 3u);
    // The save image operator was not copied, so neither is the connection into it.
    EXPECT_EQ(clipboard["dataConnections"].size(), 1u);
    EXPECT_EQ(clipboard["parameterConnections"].size(), 1u);

    const json pasted = Ok(session, {{"type", "paste"}, {"clipboard", clipboard}, {"offset", {30, 30}}});
    ASSERT_EQ(pasted["paths"].size(), 3u);
    for (const json& path : pasted["paths"]) {
        EXPECT_EQ(std::find(chosen.begin(), chosen.end(), path.get<std::string>()), chosen.end()) << path;
    }
    const json after = Ok(session, {{"type", "getGraph"}});
    EXPECT_EQ(after["operators"].size(), graph["operators"].size() + 3);
    EXPECT_EQ(after["dataConnections"].size(), graph["dataConnections"].size() + 1);
    EXPECT_EQ(after["parameterConnections"].size(), graph["parameterConnections"].size() + 1);

    // A batch of edits is one step of the history.
    const json moves = {{{"type", "moveOperator"}, {"path", chosen[2]}, {"position", {5, 5}}},
                        {{"type", "moveOperator"}, {"path", chosen[0]}, {"position", {7, 7}}}};
    EXPECT_EQ(
        Ok(session, {{"type", "batch"}, {"name", "Move 2 operators"}, {"requests", moves}})["results"].size(),
        2u);
    const json history = Ok(session, {{"type", "getHistory"}});
    ASSERT_EQ(history["undo"].size(), 2u);
    EXPECT_EQ(history["undo"][0]["name"], "Move 2 operators");
    EXPECT_EQ(history["undo"][0]["records"].size(), 2u);
    ExpectHistoryRoundTrip(session, before, Save(session));

    // A list of connections that is no list brings none.
    json unlisted = clipboard;
    unlisted["dataConnections"] = {{"only", clipboard["dataConnections"][0]}};
    const std::size_t connected = Ok(session, {{"type", "getGraph"}})["dataConnections"].size();
    Ok(session, {{"type", "paste"}, {"clipboard", unlisted}});
    EXPECT_EQ(Ok(session, {{"type", "getGraph"}})["dataConnections"].size(), connected);
}

TEST_F(EditSession, ATriggerFiresOnTheNextFrameAndIsNoStepOfTheHistory) {
    EditProcess session(kHost, project);
    EventReader events(session.GetPort(), session.GetToken());
    const std::string counter = Ok(session, {{"type", "addOperator"},
                                             {"graph", "/"},
                                             {"operatorType", "Standard.Math.Counter"},
                                             {"position", {0, 300}}})["path"];
    Ok(session, {{"type", "setValue"}, {"path", counter + "/Start"}, {"value", -50.0}});
    Ok(session, {{"type", "trigger"}, {"path", counter + "/Reset"}});
    const json reset = events.WaitFor(
        [&](const json& event) {
            return event["event"] == "frame" && event["values"].contains(counter + "/Value") &&
                   event["values"][counter + "/Value"].get<double>() < -40.0;
        },
        10.0);
    EXPECT_FALSE(reset.is_null()) << "the reset never showed";
    EXPECT_EQ(Ok(session, {{"type", "getHistory"}})["undo"].size(), 2u);
    EXPECT_EQ(session.Request({{"type", "trigger"}, {"path", counter + "/Start"}})["ok"], false);
}

TEST_F(EditSession, AReferenceListsItsAllowedObjectsAndThePaletteDescribesEveryType) {
    EditProcess session(kHost, project);
    const std::string process = FindOperator(session, "Vantel.General.Graph");
    const std::string reference = Ok(session, {{"type", "addUserParameter"},
                                               {"graph", process},
                                               {"parameterType", "Vantel.PtrParameter"},
                                               {"output", false}})["path"];
    const json reply =
        session.Request({{"type", "setReference"}, {"path", reference}, {"target", "/Oscillator [8bs]"}});
    EXPECT_EQ(reply["error"], "/Oscillator [8bs] is not among the objects Reference may refer to");
    const json graph = Ok(session, {{"type", "getGraph"}});
    const json listed = graph["/operators/2/parameters"_json_pointer].back();
    EXPECT_EQ(listed["path"], reference);
    EXPECT_EQ(listed["allowed"], json::array());  // a user reference starts with no filter
    EXPECT_TRUE(listed["referent"].is_null());
    // An enum lists its choices, each by value and label.
    const json oscillator = FindIn(graph["operators"], "type", "Standard.Math.Oscillator");
    const json waveform =
        FindIn(oscillator["parameters"], "path", oscillator["path"].get<std::string>() + "/Waveform");
    EXPECT_EQ(waveform["options"][3], (json{{"value", "square"}, {"label", "Square"}}));
    EXPECT_EQ(Ok(session, {{"type", "setReference"}, {"path", reference}, {"target", nullptr}})["value"],
              nullptr);

    // An editor's palette: every type with its docs, the operators' declared members, the data types'
    // colours.
    const json types = Ok(session, {{"type", "getTypes"}});
    const json described = FindIn(types["operators"], "type", "Standard.Math.Oscillator");
    ASSERT_TRUE(described.is_object()) << types["operators"].dump();
    EXPECT_EQ(described["category"], "Math");
    EXPECT_NE(described["doc"].get<std::string>().find("sine"), std::string::npos);
    EXPECT_TRUE(FindIn(described["parameters"], "name", "Frequency").is_object()) << described.dump();
    EXPECT_TRUE(FindIn(types["parameters"], "type", "Vantel.ColorParameter").is_object());
    EXPECT_EQ(FindIn(types["dataTypes"], "name", "Image").value("color", json()).size(), 4u);
}

TEST_F(EditSession, RequestsWithoutTheTokenOrFromElsewhereAreRefused) {
    EditProcess session(kHost, project);
    const std::string own = "http://127.0.0.1:" + std::to_string(session.GetPort());
    const std::string body = R"({"type": "getState"})";
    EXPECT_EQ(session.GetToken().size(), 32u);  // 128 bits in hexadecimal
    EXPECT_EQ(session.Post(body, session.GetToken()), 200);
    EXPECT_EQ(session.Post(body, session.GetToken(), own), 200);
    EXPECT_EQ(session.Post(body, ""), 403);
    EXPECT_EQ(session.Post(body, session.GetToken() + "0"), 403);
    EXPECT_EQ(session.Post(body, session.GetToken(), "http://example.com"), 403);
    EXPECT_EQ(session.Post(body, session.GetToken(), "", "attacker.example:80"), 403);
    EXPECT_EQ(session.Post(std::string(5 * 1024 * 1024, ' '), session.GetToken()), 413);
    EXPECT_EQ(session.Post("{\"type\": ", session.GetToken()), 400);
    EXPECT_EQ(session.Request({{"type", "getState"}})["ok"], true);

    // The page, or where it is not built the note that says so, is an HTML document either way.
    EXPECT_EQ(session.Get("/").first, 403);
    const std::string token = "?token=" + session.GetToken();
    const auto [status, page] = session.Get("/" + token);
    EXPECT_TRUE(status == 200 || status == 404) << status;
    std::string opening = page.substr(0, 14);
    std::ranges::transform(opening, opening.begin(), [](unsigned char c) { return std::tolower(c); });
    EXPECT_EQ(opening, "<!doctype html");
    EXPECT_EQ(session.Get("/assets/none.js" + token), std::pair(404, std::string("no such file")));
}

// Ctrl+C, or the system ending the session (SIGTERM), keeps unsaved work.
TEST_F(EditSession, AnEndedSessionKeepsUnsavedWorkInARecoveryFile) {
    EditProcess session(kHost, project);
    const std::string oscillator = FindOperator(session, "Standard.Math.Oscillator");
    Ok(session, {{"type", "renameOperator"}, {"path", oscillator}, {"name", "Wobble"}});
    EXPECT_EQ(session.Stop(SIGTERM), 0);
    const fs::path recovery = folder / "ImagePipeline.recovery.json";
    EXPECT_NE(session.GetOutput().find("unsaved changes kept in " + recovery.string()), std::string::npos)
        << session.GetOutput();
    EXPECT_NE(ReadFile(recovery).find("\"Wobble\""), std::string::npos);
    fs::remove(recovery);
    EditProcess saved(kHost, project);
    Ok(saved, {{"type", "renameOperator"}, {"path", oscillator}, {"name", "Steady"}});
    Save(saved);
    EXPECT_EQ(saved.Stop(), 0);
    EXPECT_FALSE(fs::exists(recovery)) << saved.GetOutput();  // saved work needs none
}

TEST_F(EditSession, ANewFileStartsAnEmptyProject) {
    const fs::path fresh = folder / "Fresh.json";
    EditProcess session(kHost, fresh);
    EXPECT_TRUE(Ok(session, {{"type", "getGraph"}})["operators"].empty());
    EXPECT_FALSE(fs::exists(fresh));  // until the first save
    Ok(session, {{"type", "addOperator"}, {"operatorType", "Vantel.General.Graph"}});
    Ok(session, {{"type", "save"}});
    EXPECT_NE(ReadFile(fresh).find("Vantel.General.Graph"), std::string::npos);
}

// Pause, step and run reach every client as state updates; the library's log lines and previews of image
// outputs arrive as they happen.
TEST_F(EditSession, RunStateLogLinesAndPreviewsArePushed) {
    EditProcess session(kHost, project);
    EventReader events(session.GetPort(), session.GetToken());
    EXPECT_EQ(session.Request({{"type", "step"}})["error"], "step while paused");
    // Each change of the run state is pushed as it is replied.
    const auto pushed = [&events](json state) {
        state["event"] = "state";
        return !events.WaitFor([&state](const json& event) { return event == state; }, 5.0).is_null();
    };
    const json paused = Ok(session, {{"type", "pause"}});
    EXPECT_EQ(paused["running"], false);
    EXPECT_TRUE(pushed(paused));
    const json stepped = Ok(session, {{"type", "step"}});
    EXPECT_EQ(stepped["frame"], paused["frame"].get<unsigned long long>() + 1);
    EXPECT_TRUE(pushed(stepped));

    // Image outputs arrive as small PNG previews ("iVBORw0KGgo" is the PNG signature in base64).
    const std::string loader = FindOperator(session, "Standard.Image.LoadImage");
    const json update = events.WaitFor(
        [&](const json& event) {
            return event.contains("previews") && event["previews"].contains(loader + "/Image");
        },
        10.0);
    ASSERT_FALSE(update.is_null()) << "no preview of the loaded picture arrived";
    EXPECT_EQ(update["previews"][loader + "/Image"].get<std::string>().rfind(
                  "data:image/png;base64,iVBORw0KGgo", 0),
              0u);
    Ok(session, {{"type", "setValue"}, {"path", loader + "/File"}, {"value", "missing.png"}});
    Ok(session, {{"type", "run"}});
    EXPECT_TRUE(pushed({{"running", true},
                        {"frame", stepped["frame"]},
                        {"time", stepped["time"]},
                        {"canUndo", true},
                        {"canRedo", false}}));
    const json line = events.WaitFor(
        [](const json& event) {
            return event["event"] == "log" &&
                   event["line"].get<std::string>().find("\"missing.png\"") != std::string::npos;
        },
        10.0);
    EXPECT_FALSE(line.is_null()) << "the loader's warning did not arrive";
}

// Two thousand random and malformed messages: every reply is well-formed, and afterwards undoing every
// accepted edit gives the first saved bytes back, and redoing them the last, so the history and the model
// never drifted.
TEST_F(EditSession, RandomMessagesLeaveTheModelConsistent) {
    EditProcess session(kHost, project);
    const std::string before = Save(session);
    std::mt19937 random(20261124);
    const auto pick = [&random](const auto& items) { return items[random() % items.size()]; };
    std::istringstream typeNames(
        "addOperator removeOperator moveOperator renameOperator connectData disconnectData connectParameter "
        "disconnectParameter setValue setComponent addUserPort addUserParameter moveListInput "
        "removeListInput "
        "addBundle removeBundle moveBundle getGraph bogus");
    const std::vector<std::string> types{std::istream_iterator<std::string>(typeNames), {}};
    const std::vector<std::string> operatorTypes = {"Standard.Math.Arithmetic", "Standard.Math.Oscillator",
                                                    "Standard.Image.Invert", "Vantel.General.Graph", "Nope"};
    const std::vector<json> values = {1.5, -2, "text", nullptr, json::array({1, 2}), json::object(), true};
    json clipboard = json::object();
    for (int message = 0; message < 2000; ++message) {
        // The paths of the moment: every operator, port and parameter of the root graph.
        std::vector<std::string> paths = {"/", "/Nobody", "relative", ""};
        if (message % 25 == 0 || paths.size() < 8) {
            const json graph = Ok(session, {{"type", "getGraph"}});
            for (const json& op : graph["operators"]) {
                paths.push_back(op["path"]);
                for (const char* group : {"inputs", "outputs", "parameters"}) {
                    for (const json& member : op[group]) {
                        paths.push_back(member["path"]);
                    }
                }
            }
        }
        if (message % 50 == 0) {
            const json copied = session.Request({{"type", "copy"}, {"paths", {pick(paths)}}});
            if (copied["ok"] == true) {
                clipboard = copied["result"];
            }
        }
        json request = {{"id", message}, {"type", pick(types)}, {"clipboard", clipboard}};
        for (const char* field : {"path", "graph", "output", "input", "list"}) {
            if (random() % 3 != 0) {
                request[field] = pick(paths);
            }
        }
        request["operatorType"] = pick(operatorTypes);
        request["value"] = pick(values);
        request["name"] = random() % 2 == 0 ? "N" : "Ü\xff";
        request["position"] = random() % 4 == 0 ? json("x") : json::array({random() % 100, -0.5});
        request["component"] = random() % 4;
        request["index"] = random() % 3;
        request["direction"] = random() % 2 == 0 ? "input" : "output";
        request["parameterType"] = random() % 2 == 0 ? "Vantel.FloatParameter" : "Vantel.Operator";
        std::string body = request.dump(-1, ' ', false, json::error_handler_t::replace);
        if (random() % 10 == 0) {
            body.resize(random() % body.size());
        }
        const int status = session.Post(body, session.GetToken());
        ASSERT_TRUE(status == 200 || status == 400) << body;
    }
    const int accepted = static_cast<int>(Ok(session, {{"type", "getHistory"}})["undo"].size());
    EXPECT_GT(accepted, 20) << "the random edits hardly ever landed; the test tests little";
    ExpectHistoryRoundTrip(session, before, Save(session));
}

}  // namespace
