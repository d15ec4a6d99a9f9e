#version 440

// The part of a picture that lies behind a panel, blurred downward, its colours strengthened, in the panel's shape.

layout(location = 0) in vec2 qt_TexCoord0;
layout(location = 0) out vec4 fragColor;

layout(std140, binding = 0) uniform buf {
    mat4 qt_Matrix;
    float qt_Opacity;
    vec2 texel;         // the way to the next texel downward
    vec4 part;          // the panel in the picture: left, top, width and height as parts of it
    vec2 size;          // the panel, in points
    float cornerExtent; // points
    float pixelsPerPoint;
};
layout(binding = 1) uniform sampler2D source;

const int reach = 12;       // texels
const float deviation = 4.; // texels
const float saturation = 1.8;
const float cornerExponent = 3.19; // the corner of PanelFrame

// Coverage of the pixel by the panel, whose corners are quarters of a superellipse.
float coverage(vec2 point) {
    vec2 fromEdge = min(point, size - point);
    vec2 inCorner = max(cornerExtent - fromEdge, 0.) / cornerExtent;
    float length = pow(pow(inCorner.x, cornerExponent) + pow(inCorner.y, cornerExponent), 1. / cornerExponent);
    return clamp((1. - length) * cornerExtent * pixelsPerPoint + .5, 0., 1.);
}

void main() {
    vec2 centre = part.xy + qt_TexCoord0 * part.zw;
    vec3 sum = vec3(0.);
    float weights = 0.;
    for (int tap = -reach; tap <= reach; ++tap) {
        float weight = exp(-float(tap * tap) / (2. * deviation * deviation));
        sum += weight * texture(source, centre + float(tap) * texel).rgb;
        weights += weight;
    }
    vec3 blurred = sum / weights;
    float luma = dot(blurred, vec3(.2126, .7152, .0722));
    vec3 strong = clamp(mix(vec3(luma), blurred, saturation), 0., 1.);
    fragColor = vec4(strong, 1.) * coverage(qt_TexCoord0 * size) * qt_Opacity;
}
