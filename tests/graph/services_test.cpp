// The lookup, and small services.
#include "host/load/dialogs.h"
#include "host/load/lookup.h"
#include "host/services/file_request.h"
#include "host/services/scene_info.h"
#include "host/services/services.h"
#include "host/services/system.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace velm::host::test {
namespace {

TEST(Lookup, GivesEveryServiceThatNodesFetch) {
    for (const char *name :
         {HOST_NODE_FUNCS, HOST_NODE_INPUT_FUNCS, HOST_NODE_OUTPUT_FUNCS, HOST_NODE_EDITOR_FUNCS,
          HOST_NODE_UTILITY_FUNCS, HOST_VPARM_FUNCS, HOST_ENVELOPE_FUNCS, HOST_PANEL_FUNCS, HOST_INSTANCE_UPDATE,
          HOST_IMAGE_LIST, HOST_FILE_REQUEST, HOST_BACKDROP_INFO, HOST_TIME_INFO, HOST_SCENE_INFO})
        EXPECT_NE(lookup(name, kUseTransient), nullptr) << name;
    EXPECT_EQ(lookup(HOST_NODE_FUNCS, kUseTransient), nodeFuncs());
    EXPECT_EQ(lookup(HOST_SCENE_INFO, kUseTransient), sceneInfo());
}

TEST(Lookup, TheSystemIdIsAWord) {
    setSystemId(kSystemRenderNode | 5);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(lookup(HOST_SYSTEM_ID, kUseTransient)), kSystemRenderNode | 5);
    setSystemId(kSystemLayout);
}

TEST(Lookup, NoTableHasANullFunction) {
    const std::pair<const char *, std::size_t> kTables[] = {
        {HOST_NODE_FUNCS, sizeof(HostNodeFuncs)},
        {HOST_NODE_INPUT_FUNCS, sizeof(HostNodeInputFuncs)},
        {HOST_NODE_OUTPUT_FUNCS, sizeof(HostNodeOutputFuncs)},
        {HOST_NODE_EDITOR_FUNCS, sizeof(HostNodeEditorFuncs)},
        {HOST_NODE_UTILITY_FUNCS, sizeof(HostNodeUtilityFuncs)},
        {HOST_VPARM_FUNCS, sizeof(HostVParmFuncs)},
        {HOST_ENVELOPE_FUNCS, sizeof(HostEnvelopeFuncs)},
        {HOST_IMAGE_LIST, sizeof(HostImageList)},
        {HOST_BACKDROP_INFO, sizeof(HostBackdropInfo)},
    };
    for (const auto &[name, size] : kTables) {
        const auto *slots = static_cast<const char *>(lookup(name, kUseTransient));
        for (std::size_t at = 0; at < size; at += sizeof(void *)) {
            void *slot;
            std::memcpy(&slot, slots + at, sizeof slot);
            EXPECT_NE(slot, nullptr) << name << " slot " << at / sizeof(void *);
        }
    }
}

TEST(Lookup, RemembersTheMissingService) {
    clearMissingService();
    EXPECT_EQ(lastMissingService(), nullptr);
    EXPECT_EQ(lookup("Weather Report", kUseTransient), nullptr);
    EXPECT_STREQ(lastMissingService(), "Weather Report");
    clearMissingService();
    lookup(HOST_NODE_FUNCS, kUseTransient);
    EXPECT_EQ(lastMissingService(), nullptr);
    EXPECT_EQ(lookup(nullptr, kUseTransient), nullptr);
}

int report = 0;
void *giveReport() { return &report; }
void *giveNodeFuncs() { return const_cast<HostNodeFuncs *>(nodeFuncs()); }

TEST(Lookup, FindsTheLastServiceOfferedUnderAName) {
    const Service report1[] = {{.name = "Weather Report 1", .give = giveReport}};
    offerServices(report1);
    EXPECT_EQ(lookup("Weather Report 1", kUseTransient), &report);
    const Service again[] = {{.name = "Weather Report 1", .give = giveNodeFuncs}};
    offerServices(again);
    EXPECT_EQ(lookup("Weather Report 1", kUseTransient), nodeFuncs());
}

int picks = 0;

struct Request {
    char path[32] = "old", base[32] = "old", full[32] = "old";
    HostFileRequest record{};
    Request() {
        record.type = kFileRequestLoad;
        record.result = 77;
        record.path = path;
        record.baseName = base;
        record.fullName = full;
        record.bufferLength = sizeof path;
        record.pick = [](HostFileRequest *) { return ++picks; };
    }
};

TEST(FileRequest, IsCancelledUnlessAChoiceWasPrepared) {
    Request request;
    picks = 0;
    EXPECT_EQ(fileRequest()(kFileRequestVersion, &request.record), 0);
    EXPECT_EQ(request.record.result, 0);
    EXPECT_STREQ(request.full, "old");
    EXPECT_EQ(picks, 0);
    prepareFileChoice("/pictures/wood.png");
    EXPECT_EQ(fileRequest()(kFileRequestVersion, &request.record), 0);
    EXPECT_EQ(request.record.result, 1);
    EXPECT_STREQ(request.path, "/pictures/");
    EXPECT_STREQ(request.base, "wood.png");
    EXPECT_STREQ(request.full, "/pictures/wood.png");
    EXPECT_EQ(picks, 1);
    EXPECT_EQ(fileRequest()(kFileRequestVersion, &request.record), 0);
    EXPECT_EQ(request.record.result, 0);
}

struct Chooser final : Dialogs {
    std::string chooseFile(const std::string &title, const std::string &fileType) override {
        asked.push_back(title + "|" + fileType);
        return answer;
    }
    std::string answer;
    std::vector<std::string> asked;
};

TEST(FileRequest, AsksADialogUnlessAFileIsPrepared) {
    Request request;
    request.record.title = "Load Clip or Still";
    Chooser chooser;
    setDialogs(&chooser);
    EXPECT_EQ(fileRequest()(kFileRequestVersion, &request.record), 0);
    EXPECT_EQ(request.record.result, 0);
    request.record.fileType = "Images";
    chooser.answer = "/pictures/wood.png";
    EXPECT_EQ(fileRequest()(kFileRequestVersion, &request.record), 0);
    EXPECT_EQ(request.record.result, 1);
    EXPECT_STREQ(request.full, "/pictures/wood.png");
    EXPECT_EQ(chooser.asked, (std::vector<std::string>{"Load Clip or Still|", "Load Clip or Still|Images"}));
    prepareFileChoice("stone.png");
    EXPECT_EQ(fileRequest()(kFileRequestVersion, &request.record), 0);
    EXPECT_STREQ(request.full, "stone.png");
    EXPECT_EQ(chooser.asked.size(), 2u);
    setDialogs(nullptr);
}

TEST(FileRequest, AFileThatDoesNotFitIsAnError) {
    Request request;
    prepareFileChoice(std::string(40, 'x'));
    EXPECT_EQ(fileRequest()(kFileRequestVersion, &request.record), 0);
    EXPECT_EQ(request.record.result, -1);
    EXPECT_STREQ(request.full, "old");
}

TEST(FileRequest, AnotherVersionIsRefused) {
    Request request;
    EXPECT_NE(fileRequest()(kFileRequestVersion + 1, &request.record), 0);
    EXPECT_EQ(request.record.result, 77);
}

TEST(SceneInfo, HoldsWhatWasSet) {
    const HostSceneInfo before = *sceneInfo();
    EXPECT_STREQ(before.name, "");
    EXPECT_EQ(before.renderCamera(0), nullptr);
    HostSceneInfo facts = before;
    facts.recursionDepth = 12;
    setSceneInfo(facts);
    EXPECT_EQ(static_cast<const HostSceneInfo *>(lookup(HOST_SCENE_INFO, kUseTransient))->recursionDepth, 12);
    setSceneInfo(before);
}

} // namespace
} // namespace velm::host::test
