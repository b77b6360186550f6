import { useEffect, useRef, useState, type KeyboardEvent, type RefObject } from "react";
import type { CalibrationAnswer } from "@/api/types";
import { nudge, type Point, type Size } from "@/lib/geometry";
import { AnswerOverlay } from "./answer_overlay";
import { Magnifier } from "./magnifier";
import { nameOf, type End, type Mark, type Tool } from "./marks";
import { useDrawing } from "./use_drawing";

interface Props {
    /** The address of the picture; nothing before it is there. */
    picture: string | undefined;
    size: Size;
    tool: Tool;
    marks: Mark[];
    answer: CalibrationAnswer | undefined;
    onDrawn: (ends: readonly [Point, Point]) => void;
    onMoved: (id: number, end: End, to: Point) => void;
    onRemove: (id: number) => void;
}

const ends: End[] = [0, 1];

/** The picture with the marks on it, which are drawn and moved here. */
export function PictureEditor({ picture, size, tool, marks, answer, onDrawn, onMoved, onRemove }: Props) {
    const svg = useRef<SVGSVGElement>(null);
    const drawing = useDrawing(svg, size, tool, { onDrawn, onMoved });
    const [focused, setFocused] = useState(false);
    const unit = useScreenPixel(svg, size);
    const { action, cursor } = drawing;

    return (
        <div className={`editor ${tool}`} style={{ aspectRatio: size.width / size.height }}>
            <svg
                ref={svg}
                viewBox={`0 0 ${size.width} ${size.height}`}
                role="application"
                aria-roledescription="drawing area"
                aria-label="Picture to draw on"
                aria-describedby="editor-help"
                tabIndex={0}
                onPointerDown={drawing.onPointerDown}
                onPointerMove={drawing.onPointerMove}
                onPointerUp={drawing.onPointerUp}
                onKeyDown={drawing.onKeyDown}
                onFocus={(event) => setFocused(event.target === svg.current)}
                onBlur={() => setFocused(false)}
            >
                <image href={picture} width={size.width} height={size.height} />
                {answer && <AnswerOverlay answer={answer} size={size} unit={unit} />}
                {marks.map((mark) => (
                    <MarkShape key={mark.id} mark={mark} name={nameOf(marks, mark)} unit={unit} size={size}
                        onGrab={drawing.grab} onShow={drawing.show} onMoved={onMoved} onRemove={onRemove} />
                ))}
                {action.kind === "drawing" && (
                    <line className={`mark ${tool} new`} x1={action.from[0]} y1={action.from[1]} x2={action.to[0]}
                        y2={action.to[1]} strokeWidth={2.5 * unit} />
                )}
                {cursor && focused && <Cross at={cursor} unit={unit} />}
            </svg>
            {cursor && (focused || action.kind !== "none") && <Magnifier picture={picture ?? ""} size={size} at={cursor} />}
            <p className="reader" role="status">
                {cursor && focused ? `${cursor[0]}, ${cursor[1]}` : ""}
                {action.kind === "drawing" ? " drawing" : ""}
            </p>
        </div>
    );
}

/** The size of a pixel of the screen in those of the picture: lines and texts are as large on a phone as elsewhere. */
function useScreenPixel(svg: RefObject<SVGSVGElement>, size: Size): number {
    const [unit, setUnit] = useState(1);
    useEffect(() => {
        if (svg.current === null) return undefined;
        const observer = new ResizeObserver(([entry]) => {
            if (entry && entry.contentRect.width > 0) setUnit(size.width / entry.contentRect.width);
        });
        observer.observe(svg.current);
        return () => observer.disconnect();
    }, [svg, size.width]);
    return unit;
}

interface MarkProps {
    mark: Mark;
    name: string;
    unit: number;
    size: Size;
    onGrab: (event: React.PointerEvent, id: number, end: End) => void;
    onShow: (at: Point) => void;
    onMoved: (id: number, end: End, to: Point) => void;
    onRemove: (id: number) => void;
}

const endNames = { ground: ["first end", "second end"], vertical: ["foot", "top"] } as const;

function MarkShape({ mark, name, unit, size, onGrab, onShow, onMoved, onRemove }: MarkProps) {
    const [[x1, y1], [x2, y2]] = mark.ends;

    function press(event: KeyboardEvent, end: End) {
        const moved = nudge(mark.ends[end], event.key, event.shiftKey, size);
        if (moved) {
            onMoved(mark.id, end, moved);
            onShow(moved);
        } else if (event.key === "Delete" || event.key === "Backspace") {
            onRemove(mark.id);
        } else {
            return;
        }
        event.preventDefault();
        event.stopPropagation();
    }

    return (
        <g className={`mark ${mark.kind}`}>
            <line className="halo" x1={x1} y1={y1} x2={x2} y2={y2} strokeWidth={5 * unit} />
            <line x1={x1} y1={y1} x2={x2} y2={y2} strokeWidth={2.5 * unit} />
            {ends.map((end) => (
                <circle
                    key={end}
                    cx={mark.ends[end][0]}
                    cy={mark.ends[end][1]}
                    r={7 * unit}
                    strokeWidth={2 * unit}
                    tabIndex={0}
                    role="button"
                    aria-label={`${name}, ${endNames[mark.kind][end]}, at ${mark.ends[end].join(", ")}`}
                    aria-describedby="handle-help"
                    onPointerDown={(event) => onGrab(event, mark.id, end)}
                    onKeyDown={(event) => press(event, end)}
                />
            ))}
            <text x={(x1 + x2) / 2 + 8 * unit} y={(y1 + y2) / 2 - 6 * unit} fontSize={13 * unit} strokeWidth={3 * unit}>
                {name}
                {mark.metres !== "" && `: ${mark.metres} m`}
            </text>
        </g>
    );
}

function Cross({ at: [x, y], unit }: { at: Point; unit: number }) {
    const arm = 14 * unit;
    return (
        <g className="cross" strokeWidth={1.5 * unit}>
            <line x1={x - arm} y1={y} x2={x + arm} y2={y} />
            <line x1={x} y1={y - arm} x2={x} y2={y + arm} />
        </g>
    );
}
