// Tests of how two moments of a device differ.
#include "sim/panel/snapshot.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;
using sim::difference;

TEST(PanelSnapshotTest, SameMomentsDifferInNothing) {
    json const moment = {{"properties", {{"a", 1}, {"b", "x"}}}};
    EXPECT_EQ(difference(moment, moment), json::object());
}

TEST(PanelSnapshotTest, OnlyWhatChangedIsTold) {
    json const before = {{"properties", {{"a", 1}, {"b", "x"}, {"c", true}}}, {"nodes", {{"/dev/x", true}}}};
    json const now = {{"properties", {{"a", 2}, {"b", "x"}, {"c", true}}}, {"nodes", {{"/dev/x", true}}}};
    EXPECT_EQ(difference(before, now), json({{"properties", {{"a", 2}}}}));
}

TEST(PanelSnapshotTest, WhatCameAndWhatWentIsTold) {
    json const before = {{"faults", {{"1", {{"fired", "0"}}}}}, {"device", {{"connected", true}}}};
    json const now = {{"faults", {{"2", {{"fired", "0"}}}}}};
    EXPECT_EQ(difference(before, now),
              json({{"device", {{"connected", nullptr}}}, {"faults", {{"1", nullptr}, {"2", {{"fired", "0"}}}}}}));
}

TEST(PanelSnapshotTest, ChangesAreTaken) {
    json moment = {{"properties", {{"a", 1}, {"b", "x"}}}};
    sim::take_changes({R"({"time":1.5,"property":"a","value":2,"name":"two"})",
                       R"({"time":1.5,"property":"c","value":true})", "half a line"},
                      moment);
    EXPECT_EQ(moment, json({{"properties", {{"a", 2}, {"b", "x"}, {"c", true}}}}));
}

TEST(PanelSnapshotTest, LostDeviceTakesItsMembersAlong) {
    json const before = {{"properties", {{"a", 1}}}, {"device", {{"connected", true}, {"message", ""}}}};
    EXPECT_EQ(difference(before, sim::lost_device("gone")),
              json({{"properties", {{"a", nullptr}}}, {"device", {{"connected", false}, {"message", "gone"}}}}));
}

}  // namespace
