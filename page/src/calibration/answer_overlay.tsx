import type { CalibrationAnswer, GridLine } from "@/api/types";
import { clipLine, type Point, type Size } from "@/lib/geometry";

interface Props {
    answer: CalibrationAnswer;
    size: Size;
    /** The width of a thin line. */
    unit: number;
}

/** The horizon and the grid on the ground that follow from a calibration. */
export function AnswerOverlay({ answer, size, unit }: Props) {
    return (
        <g className="answer" aria-hidden="true">
            {answer.grid.map((line, index) => (
                <Line key={index} line={line} size={size} unit={unit} />
            ))}
            {answer.horizon && (
                <Clipped className="horizon" from={answer.horizon.from} to={answer.horizon.to} size={size} width={2 * unit} />
            )}
        </g>
    );
}

function Line({ line, size, unit }: { line: GridLine; size: Size; unit: number }) {
    return (
        <>
            <Clipped className="grid" from={line.from} to={line.to} size={size} width={unit} />
            {line.label_at && (
                <text x={line.label_at[0]} y={line.label_at[1]} fontSize={11 * unit} strokeWidth={3 * unit}>
                    {line.label}
                </text>
            )}
        </>
    );
}

interface ClippedProps {
    className: string;
    from: Point;
    to: Point;
    size: Size;
    width: number;
}

/** Its ends may lie far outside the picture, further than a browser draws well. */
function Clipped({ className, from, to, size, width }: ClippedProps) {
    const ends = clipLine(from, to, size);
    if (!ends) return null;
    const [[x1, y1], [x2, y2]] = ends;
    return <line className={className} x1={x1} y1={y1} x2={x2} y2={y2} strokeWidth={width} />;
}
