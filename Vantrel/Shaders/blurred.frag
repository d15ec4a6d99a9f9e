#version 440

// A picture blurred along one direction.

layout(location = 0) in vec2 qt_TexCoord0;
layout(location = 0) out vec4 fragColor;

layout(std140, binding = 0) uniform buf {
    mat4 qt_Matrix;
    float qt_Opacity;
    vec2 texel; // the way to the next texel along the direction
};
layout(binding = 1) uniform sampler2D source;

const int reach = 12;       // texels
const float deviation = 4.; // texels

void main() {
    vec4 sum = vec4(0.);
    float weights = 0.;
    for (int tap = -reach; tap <= reach; ++tap) {
        float weight = exp(-float(tap * tap) / (2. * deviation * deviation));
        sum += weight * texture(source, qt_TexCoord0 + float(tap) * texel);
        weights += weight;
    }
    fragColor = sum / weights * qt_Opacity;
}
