// What lies in front of the ranging sensor.
#include "sim/models/scene.h"

#include <cmath>
#include <sstream>
#include <vector>

#include "sim/core/numbers.h"

namespace sim {

namespace {

constexpr double kDegree = 3.14159265358979323846 / 180.0;
constexpr double kFarthest = 10000.0;  // mm, further than the sensor sees
constexpr double kSteepest = 60.0;     // degrees
constexpr double kHoleSlope = 0.15;    // half the width of the hole at the distance of 1
constexpr double kUsualReflectance = 50.0;

struct Grammar {
    char const* name;
    Scene::Shape shape;
    std::size_t least;  // numbers behind the name
    std::size_t most;
};

constexpr Grammar kGrammar[] = {
    {"none", Scene::Shape::nothing, 0, 0}, {"plane", Scene::Shape::plane, 1, 1}, {"tilted", Scene::Shape::tilted, 2, 3},
    {"step", Scene::Shape::step, 2, 2},    {"hole", Scene::Shape::hole, 1, 2},
};

bool is_distance(double mm) {
    return mm > 0.0 && mm <= kFarthest;
}

bool is_angle(double degrees) {
    return std::abs(degrees) <= kSteepest;
}

}  // namespace

std::optional<Scene> Scene::parse(std::string_view text) {
    std::istringstream words{std::string(text)};
    std::string name;
    words >> name;
    std::vector<double> numbers;
    std::optional<double> reflectance;
    for (std::string word; words >> word;) {
        bool const last = word == "reflectance" && !reflectance && words >> word;
        auto const number = parse_float(word);
        if (!number || (reflectance && !last)) {
            return std::nullopt;
        }
        if (last) {
            reflectance = *number;
        } else {
            numbers.push_back(*number);
        }
    }
    for (Grammar const& grammar : kGrammar) {
        if (name != grammar.name) {
            continue;
        }
        if (numbers.size() < grammar.least || numbers.size() > grammar.most) {
            return std::nullopt;
        }
        numbers.resize(3);
        Scene scene;
        scene.shape_ = grammar.shape;
        scene.first_ = numbers[0];
        scene.second_ = numbers[1];
        scene.third_ = numbers[2];
        scene.reflectance_ = reflectance.value_or(kUsualReflectance);
        return scene.is_possible() ? std::optional<Scene>(scene) : std::nullopt;
    }
    return std::nullopt;
}

bool Scene::is_possible() const {
    if (!(reflectance_ >= 1.0 && reflectance_ <= 100.0)) {
        return false;
    }
    switch (shape_) {
        case Shape::nothing:
            return reflectance_ == kUsualReflectance;
        case Shape::plane:
            return is_distance(first_);
        case Shape::tilted:
            return is_distance(first_) && is_angle(second_) && is_angle(third_);
        case Shape::step:
            return is_distance(first_) && is_distance(second_);
        case Shape::hole:
            return is_distance(first_) && (second_ == 0.0 || (is_distance(second_) && second_ > first_));
    }
    return false;
}

std::string Scene::text() const {
    std::ostringstream text;
    for (Grammar const& grammar : kGrammar) {
        if (grammar.shape != shape_) {
            continue;
        }
        text << grammar.name;
        double const numbers[] = {first_, second_, third_};
        for (std::size_t i = 0; i < grammar.most; ++i) {
            text << ' ' << number_text(numbers[i]);
        }
    }
    if (reflectance_ != kUsualReflectance) {
        text << " reflectance " << number_text(reflectance_);
    }
    return text.str();
}

std::optional<Target> Scene::look(double right, double down) const {
    double distance = first_;
    switch (shape_) {
        case Shape::nothing:
            return std::nullopt;
        case Shape::plane:
            break;
        case Shape::tilted: {
            double const nearing = right * std::tan(second_ * kDegree) + down * std::tan(third_ * kDegree);
            if (nearing >= 1.0) {
                return std::nullopt;  // the ray runs along the plane, or away from it
            }
            distance = first_ / (1.0 - nearing);
            break;
        }
        case Shape::step:
            distance = right < 0.0 ? first_ : second_;
            break;
        case Shape::hole:
            if (std::abs(right) < kHoleSlope && std::abs(down) < kHoleSlope) {
                if (second_ == 0.0) {
                    return std::nullopt;
                }
                distance = second_;
            }
            break;
    }
    return Target{distance, reflectance_};
}

std::optional<Target> Scene::flat() const {
    return shape_ == Shape::plane ? look(0.0, 0.0) : std::nullopt;
}

}  // namespace sim
