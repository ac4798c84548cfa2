#include "tests/support/script.h"

namespace support {

void Script::operator()(Peer& peer) const {
    struct Player {
        Peer& peer;

        void operator()(const Send& step) { peer.send(step.bytes, step.pieceBytes); }

        void operator()(const ExpectLine&) { peer.readCommandOfOld(); }

        void operator()(const Close&) { peer.close(); }

        void operator()(const Reset&) { peer.reset(); }

        void operator()(const HoldSilent&) { peer.holdSilent(); }

        void operator()(const Trickle& step) { peer.trickle(step.bytes, step.pause); }

        void operator()(const BeginTls& step) { peer.beginTls(step.identity); }

        void operator()(const Stream& step) {
            for (std::string bytes = step.next(); !bytes.empty(); bytes = step.next()) {
                peer.send(bytes);
            }
        }
    };

    for (const Step& step : steps_) {
        std::visit(Player{peer}, step);
    }
    peer.close();
}

} // namespace support
