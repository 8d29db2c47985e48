#ifndef IMGTUNE_WORKBENCH_STUDIES_SWINGS_H
#define IMGTUNE_WORKBENCH_STUDIES_SWINGS_H

#include <cstdint>
#include <optional>

namespace imgtune::workbench {

/// Where a motion turned round: it had come from one point to another, and goes back.
template <class Point>
struct Turn {
    Point from;
    Point at;
    std::uint64_t frame = 0;  ///< in which it had come nearly so far; noise goes on from there
};

/// Finds where a motion turns, in any space in which there is a distance: a way of at least 1 out
/// is followed by one of at least 1 back. What moves less is noise, what moves on is no turn.
template <class Point>
class Turns {
  public:
    /// After `patience` frames without a farther point or a turn, the way begins anew.
    explicit Turns(std::uint64_t patience) : patience_(patience) {}

    /// The motion is at `now`; frames in which it stood still may be left out. `distance` takes two
    /// points, and a distance below which any smaller one may be told.
    template <class Distance>
    std::optional<Turn<Point>> next(std::uint64_t frame, const Point& now, Distance&& distance) {
        std::optional<Turn<Point>> turn;
        if (!last_) {
            begin(frame, now);
        } else if (frame - active_ > patience_) {
            begin(frame, Point(*last_));
        }
        const double way = distance(*pivot_, now, way_);
        if (way > way_) {
            go_to(frame, now, way);
        } else if (const double back = distance(*farthest_, now, 1.0); back >= 1.0) {
            if (way_ >= 1.0) turn = Turn<Point>{*pivot_, *farthest_, reached_};
            pivot_ = farthest_;
            way_when_reached_ = 0.0;
            go_to(frame, now, back);
        }
        last_ = now;
        return turn;
    }

  private:
    static constexpr double kFarther = 1.1;

    void begin(std::uint64_t frame, const Point& at) {
        pivot_ = farthest_ = at;
        way_ = way_when_reached_ = 0.0;
        reached_ = active_ = frame;
    }

    void go_to(std::uint64_t frame, const Point& now, double way) {
        if (way > kFarther * way_when_reached_) {
            way_when_reached_ = way;
            reached_ = frame;
        }
        farthest_ = now;
        way_ = way;
        active_ = frame;
    }

    std::uint64_t patience_;
    std::optional<Point> pivot_, farthest_, last_;
    double way_ = 0.0;
    double way_when_reached_ = 0.0;
    std::uint64_t reached_ = 0;  ///< frame in which the way had come nearly so far
    std::uint64_t active_ = 0;   ///< frame of the last turn or farther point
};

/// Turns that follow each other without a pause.
struct SwingChain {
    /// Fewer are an event and its end: a flash, a lamp switched on and off.
    static constexpr std::uint64_t kLeastTurns = 4;

    std::uint64_t first = 0;
    std::uint64_t last = 0;
    std::uint64_t turns = 0;

    bool recurs() const { return turns >= kLeastTurns; }

    /// From one turn to the next but one is a period. 0 where nothing recurs.
    double per_second(double frames_per_second) const {
        if (!recurs()) return 0.0;
        return static_cast<double>(turns - 1) / 2.0 * frames_per_second /
               static_cast<double>(last - first);
    }
};

}  // namespace imgtune::workbench

#endif
