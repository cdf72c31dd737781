// The simulated gateway board: which commands it answers and how its
// push-to-talk and carrier lines behave.

#include "sim/gateway_sim.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace veloran::sim {
namespace {

std::string Send(GatewayBoard* board, const std::string& text) {
    std::vector<uint8_t> out;
    for (char c : text) board->receive(static_cast<uint8_t>(c), &out);
    return std::string(out.begin(), out.end());
}

TEST(GatewayBoard, OnlyReadsAreAnswered) {
    GatewayBoard board;
    EXPECT_EQ(Send(&board, "CPA11111110\r"), "");
    EXPECT_EQ(Send(&board, "RESPA0\r"), "");
    EXPECT_EQ(Send(&board, "RPA1\r"), "0\r");
    EXPECT_EQ(Send(&board, "RPA0\r"), "0\r");  // line 0 reset: transmitting
    EXPECT_EQ(Send(&board, "SETPA0\r"), "");
    EXPECT_EQ(Send(&board, "RPA0\r"), "1\r");
    EXPECT_EQ(Send(&board, "RPA9\r"), "");  // no such line
    EXPECT_EQ(board.commands(), (std::vector<std::string>{"CPA11111110", "RESPA0", "RPA1", "RPA0",
                                                          "SETPA0", "RPA0", "RPA9"}));
}

TEST(GatewayBoard, KeyingIsActiveLow) {
    GatewayBoard board;
    EXPECT_FALSE(board.keyed());
    Send(&board, "RESPA0\r");
    EXPECT_TRUE(board.keyed());
    Send(&board, "SETPA0\r");
    EXPECT_FALSE(board.keyed());
}

TEST(GatewayBoard, CarrierDropsAfterTheGivenReadsAndKeyingOverItIsNoted) {
    GatewayBoard board;
    board.setCarrier(true);
    board.dropCarrierAfterReads(3);
    Send(&board, "RESPA0\r");
    EXPECT_TRUE(board.keyedOverCarrier());
    EXPECT_EQ(Send(&board, "RPA1\r"), "1\r");
    EXPECT_EQ(Send(&board, "RPA1\r"), "1\r");
    EXPECT_EQ(Send(&board, "RPA1\r"), "0\r");
    EXPECT_EQ(board.carrierReads(), 3);
    board.setSilent(true);
    EXPECT_EQ(Send(&board, "RPA1\r"), "");
}

}  // namespace
}  // namespace veloran::sim
