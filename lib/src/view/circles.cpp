#include "circles.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <tuple>
#include <utility>
#include <vector>

namespace vorl::view {

namespace {

double distance(const Circle& a, const Circle& b) {
    const double dx = a.x - b.x;
    const double dy = a.y - b.y;
    return std::sqrt(dx * dx + dy * dy);
}

bool overlap(const Circle& a, const Circle& b) { return distance(a, b) < (a.r + b.r) * (1 - 1e-9); }

/// Puts c where it touches both, on the left of the way from a to b.
void touch(const Circle& a, const Circle& b, Circle& c) {
    const double dx = b.x - a.x;
    const double dy = b.y - a.y;
    const double apart2 = dx * dx + dy * dy;
    if (apart2 == 0) {
        c.x = a.x + a.r + c.r;
        c.y = a.y;
        return;
    }
    const double toA = a.r + c.r;
    const double toB = b.r + c.r;
    const double along = ((toA - toB) * (toA + toB) / apart2 + 1) / 2;
    const double aside = std::sqrt(std::max(0., toA * toA / apart2 - along * along));
    c.x = a.x + along * dx - aside * dy;
    c.y = a.y + along * dy + aside * dx;
}

/// The circles on the outside of those placed so far, as a ring.
///
/// W. Wang, H. Wang, G. Dai, H. Wang, Visualization of large hierarchical data by circle packing,
/// CHI 2006, https://doi.org/10.1145/1124772.1124851
class Front {
public:
    explicit Front(std::span<Circle> circles)
        : m_circles(circles), m_next(circles.size()), m_before(circles.size()) {
        join(0, 1);
        join(1, 2);
        join(2, 0);
        m_at = nearest(0);
    }

    void add(std::size_t added) {
        Circle& circle = m_circles[added];
        std::size_t a = m_at;
        std::size_t b = m_next[a];
        while (true) {
            touch(m_circles[a], m_circles[b], circle);
            // The first in the way, looked for on both sides at once, takes the place of what lies
            // between.
            std::size_t right = m_next[b];
            std::size_t left = m_before[a];
            double rightWay = m_circles[b].r;
            double leftWay = m_circles[a].r;
            bool hit = false;
            do {
                if (rightWay <= leftWay) {
                    if (overlap(m_circles[right], circle)) {
                        b = right;
                        hit = true;
                        break;
                    }
                    rightWay += m_circles[right].r;
                    right = m_next[right];
                } else {
                    if (overlap(m_circles[left], circle)) {
                        a = left;
                        hit = true;
                        break;
                    }
                    leftWay += m_circles[left].r;
                    left = m_before[left];
                }
            } while (right != m_next[left]);
            join(a, b);
            if (!hit) break;
        }
        join(a, added);
        join(added, b);
        m_at = nearest(added);
    }

private:
    void join(std::size_t a, std::size_t b) {
        m_next[a] = b;
        m_before[b] = a;
    }

    /// How far from the origin a circle between this and the next one comes to lie.
    double score(std::size_t at) const {
        const Circle& a = m_circles[at];
        const Circle& b = m_circles[m_next[at]];
        const double sum = a.r + b.r;
        if (sum == 0) return a.x * a.x + a.y * a.y;
        const double x = (a.x * b.r + b.x * a.r) / sum;
        const double y = (a.y * b.r + b.y * a.r) / sum;
        return x * x + y * y;
    }

    std::size_t nearest(std::size_t from) const {
        std::size_t best = from;
        double least = score(from);
        for (std::size_t at = m_next[from]; at != from; at = m_next[at]) {
            const double own = score(at);
            if (own < least) {
                least = own;
                best = at;
            }
        }
        return best;
    }

    std::span<Circle> m_circles;
    std::vector<std::size_t> m_next;
    std::vector<std::size_t> m_before;
    std::size_t m_at = 0;
};

/// Puts each circle where it touches two others and lies nearest to the middle of those so far.
/// That makes fewer holes than the front does, and takes longer.
void packFew(std::span<Circle> circles) {
    double sumX = 0;
    double sumY = 0;
    double sum = 0;
    for (std::size_t n = 0; n < circles.size(); ++n) {
        Circle& added = circles[n];
        Circle best{0, 0, added.r};
        double least = -1;
        const auto consider = [&] {
            const double dx = added.x - sumX / sum;
            const double dy = added.y - sumY / sum;
            const double way = dx * dx + dy * dy;
            if (least >= 0 && way >= least * (1 - 1e-9)) return;
            for (std::size_t i = 0; i < n; ++i)
                if (overlap(circles[i], added)) return;
            least = way;
            best = added;
        };
        if (n == 1) {
            best.x = circles[0].r + added.r;
        } else {
            for (std::size_t a = 0; a < n; ++a)
                for (std::size_t b = 0; b < n; ++b) {
                    if (a == b || distance(circles[a], circles[b]) >
                                      circles[a].r + circles[b].r + 2 * added.r)
                        continue;
                    touch(circles[a], circles[b], added);
                    consider();
                }
        }
        added = best;
        const double weight = added.r * added.r;
        sumX += weight * added.x;
        sumY += weight * added.y;
        sum += weight;
    }
}

/// Many circles stand on a grid of triangles, ring by ring, which takes linear time.
void packOnGrid(std::span<Circle> circles) {
    double r = 0;
    for (const Circle& circle : circles) r = std::max(r, circle.r);
    const double half = r;
    const double height = std::sqrt(3.) * r;
    const double steps[6][2] = {{-half, height}, {-2 * half, 0}, {-half, -height},
                                {half, -height}, {2 * half, 0},  {half, height}};
    std::size_t placed = 0;
    double x = 0;
    double y = 0;
    const auto put = [&] {
        if (placed == circles.size()) return;
        circles[placed].x = x;
        circles[placed++].y = y;
    };
    put();
    for (std::size_t ring = 1; placed < circles.size(); ++ring) {
        x = static_cast<double>(ring) * 2 * half;
        y = 0;
        for (const auto& step : steps)
            for (std::size_t i = 0; i < ring; ++i) {
                put();
                x += step[0];
                y += step[1];
            }
    }
}

}  // namespace

Circle enclosing(std::span<const Circle> circles) {
    Circle around;
    if (circles.empty()) return around;
    // The centre goes towards what is farthest, by steps that shrink.
    double mass = 0;
    for (const Circle& circle : circles) {
        const double weight = circle.r * circle.r;
        around.x += weight * circle.x;
        around.y += weight * circle.y;
        mass += weight;
    }
    if (mass > 0) {
        around.x /= mass;
        around.y /= mass;
    }
    const auto farthest = [&](const Circle& from) {
        const Circle* far = &circles[0];
        double most = -1;
        for (const Circle& circle : circles) {
            const double way = distance(from, circle) + circle.r;
            if (way > most) {
                most = way;
                far = &circle;
            }
        }
        return std::pair(far, most);
    };
    auto [far, most] = farthest(around);
    around.r = most;
    Circle at = around;
    double step = 0.2;
    const int rounds = circles.size() > 20000 ? 40 : 400;
    for (int round = 0; round < rounds && step > 1e-6; ++round) {
        const double way = distance(at, *far);
        if (way == 0) break;
        at.x += (far->x - at.x) * step * most / way;
        at.y += (far->y - at.y) * step * most / way;
        std::tie(far, most) = farthest(at);
        if (most < around.r) {
            around = {at.x, at.y, most};
        } else {
            at = around;
            std::tie(far, most) = farthest(at);
            step /= 2;
        }
    }
    return around;
}

void pack(std::span<Circle> circles) {
    constexpr std::size_t few = 100;
    constexpr std::size_t many = 20000;
    if (circles.size() <= few) return packFew(circles);
    if (circles.size() > many) return packOnGrid(circles);
    Circle& a = circles[0];
    Circle& b = circles[1];
    a.x = -b.r;
    b.x = a.r;
    a.y = b.y = 0;
    // Below, so that the ring has its outside on the left.
    touch(b, a, circles[2]);
    Front front(circles);
    for (std::size_t i = 3; i < circles.size(); ++i) front.add(i);
}

}  // namespace vorl::view
