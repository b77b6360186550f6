import type { Point, Size } from "@/lib/geometry";

/** How many pixels of the picture it shows to each side. */
const reach = 16;

/** The surroundings of a place, large enough to tell pixels apart; in the corner away from the place. */
export function Magnifier({ picture, size, at: [x, y] }: { picture: string; size: Size; at: Point }) {
    const left = x > size.width / 2;
    return (
        <svg
            className={`magnifier ${left ? "left" : "right"}`}
            viewBox={`${x - reach} ${y - reach} ${2 * reach} ${2 * reach}`}
            aria-hidden="true"
        >
            <image href={picture} width={size.width} height={size.height} />
            <path className="cross" d={`M${x - reach} ${y}h${2 * reach}M${x} ${y - reach}v${2 * reach}`} strokeWidth={0.3} />
        </svg>
    );
}
