#include "apps/flame_clip/people.h"

namespace flame_clip {
namespace {

const float k_pi = 3.14159265f;
const rgb k_skin{0.70f, 0.52f, 0.42f};

struct leg_swing {
    float hip, knee;  // angles from the vertical
};

leg_swing swing(float stride, float phase) {
    const float angle = std::sin((stride + phase) * k_pi);
    const float lifted = std::max(0.0f, std::cos((stride + phase) * k_pi));
    return {0.42f * angle, 0.42f * angle - 0.75f * lifted};
}

void paint_leg(canvas& picture, point hip, float length, leg_swing pose, float facing, rgb colour) {
    const point knee{hip.x + std::sin(pose.hip) * length * 0.5f * facing, hip.y + std::cos(pose.hip) * length * 0.5f};
    const point foot{knee.x + std::sin(pose.knee) * length * 0.5f * facing,
                     knee.y + std::cos(pose.knee) * length * 0.5f};
    picture.limb(hip, knee, length * 0.17f, length * 0.13f, colour);
    picture.limb(knee, foot, length * 0.13f, length * 0.09f, colour);
    picture.limb(foot, {foot.x + length * 0.16f * facing, foot.y + length * 0.01f}, length * 0.08f, length * 0.06f,
                 {0.09f, 0.08f, 0.08f});
}

void paint_arm(canvas& picture, point shoulder, float length, float angle, float facing, rgb colour) {
    const point elbow{shoulder.x + std::sin(angle) * length * 0.5f * facing,
                      shoulder.y + std::cos(angle) * length * 0.5f};
    const float bent = angle + 0.35f;
    const point hand{elbow.x + std::sin(bent) * length * 0.45f * facing, elbow.y + std::cos(bent) * length * 0.45f};
    picture.limb(shoulder, elbow, length * 0.15f, length * 0.12f, colour);
    picture.limb(elbow, hand, length * 0.12f, length * 0.09f, colour);
    picture.ellipse(hand, length * 0.1f, length * 0.1f, k_skin * 0.9f);
}

}  // namespace

void paint_person(canvas& picture, point feet, float height, float stride, float facing, const person_look& look) {
    const bool walking = facing != 0;
    const float side = walking ? facing : 1;
    const float bob = walking ? 0.012f * height * std::fabs(std::sin(stride * k_pi)) : 0;
    const point hip{feet.x, feet.y - height * 0.49f - bob + height * 0.02f};
    const point shoulder{feet.x + side * height * 0.015f, feet.y - height * 0.80f - bob};
    const leg_swing still{0.05f, 0.0f};
    const float arm_angle = walking ? 0.5f * std::sin(stride * k_pi) : 0.08f;

    picture.ellipse(feet, height * 0.17f, height * 0.035f, {0.03f, 0.03f, 0.03f}, 0.55f, height * 0.06f);
    paint_arm(picture, shoulder, height * 0.36f, arm_angle, side, look.jacket * 0.7f);
    paint_leg(picture, hip, height * 0.48f, walking ? swing(stride, 1) : still, side, look.trousers * 0.75f);
    paint_leg(picture, hip, height * 0.48f, walking ? swing(stride, 0) : still, walking ? side : -side, look.trousers);
    picture.limb({hip.x, hip.y - height * 0.02f}, {shoulder.x, shoulder.y + height * 0.05f}, height * 0.085f,
                 height * 0.1f, look.jacket);
    picture.limb({hip.x - side * height * 0.05f, hip.y},
                 {shoulder.x - side * height * 0.055f, shoulder.y + height * 0.06f}, height * 0.03f, height * 0.035f,
                 look.jacket * 0.72f, 0.8f, height * 0.03f);
    if (look.striped) {
        for (const float down : {0.12f, 0.2f}) {
            picture.limb({shoulder.x - height * 0.085f, shoulder.y + height * down},
                         {shoulder.x + height * 0.085f, shoulder.y + height * down}, height * 0.011f, height * 0.011f,
                         {0.72f, 0.74f, 0.72f});
        }
    }
    paint_arm(picture, shoulder, height * 0.36f, -arm_angle, side, look.jacket * 0.92f);
    const point head{shoulder.x + side * height * 0.012f, shoulder.y - height * 0.1f};
    picture.limb({head.x, head.y + height * 0.03f}, {shoulder.x, shoulder.y}, height * 0.035f, height * 0.04f,
                 k_skin * 0.85f);
    picture.ellipse(head, height * 0.055f, height * 0.07f, k_skin);
    picture.ellipse({head.x - side * height * 0.018f, head.y - height * 0.032f}, height * 0.052f, height * 0.046f,
                    look.hair);
}

}  // namespace flame_clip
