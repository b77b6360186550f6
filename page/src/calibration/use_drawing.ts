import { useRef, useState, type KeyboardEvent, type PointerEvent, type RefObject } from "react";
import { clamp, distance, nudge, toPicture, type Point, type Size } from "@/lib/geometry";
import type { End, Tool } from "./marks";

/** What is being done in the picture. */
type Action =
    | { kind: "none" }
    | { kind: "drawing"; from: Point; to: Point }
    | { kind: "moving"; id: number; end: End };

/** A pointer that moved less than this, in pixels of the screen, has clicked: the next click ends the segment. */
const clickDistance = 5;

interface Callbacks {
    onDrawn: (ends: readonly [Point, Point]) => void;
    onMoved: (id: number, end: End, to: Point) => void;
}

export interface Drawing {
    action: Action;
    /** The cross of the keyboard and of the magnifier; nothing before the picture was used. */
    cursor: Point | undefined;
    onPointerDown: (event: PointerEvent<SVGSVGElement>) => void;
    onPointerMove: (event: PointerEvent<SVGSVGElement>) => void;
    onPointerUp: (event: PointerEvent<SVGSVGElement>) => void;
    onKeyDown: (event: KeyboardEvent<SVGSVGElement>) => void;
    grab: (event: PointerEvent, id: number, end: End) => void;
    show: (cursor: Point) => void;
}

/** Draws and moves segments: by dragging, by two clicks, or by arrow keys and Enter. */
export function useDrawing(
    svg: RefObject<SVGSVGElement>,
    size: Size,
    tool: Tool,
    { onDrawn, onMoved }: Callbacks,
): Drawing {
    const [action, setAction] = useState<Action>({ kind: "none" });
    const [cursor, setCursor] = useState<Point>();
    const pressedAt = useRef<Point>();

    function locate(event: PointerEvent): Point {
        const box = svg.current?.getBoundingClientRect() ?? new DOMRect(0, 0, 1, 1);
        return toPicture(event, box, size);
    }
    function finish(from: Point, to: Point) {
        setAction({ kind: "none" });
        if (distance(from, to) >= 1) onDrawn([from, to]);
    }
    /** The next step of a segment at a place: its begin, or its end. */
    function place(at: Point) {
        if (action.kind === "drawing") finish(action.from, at);
        else setAction({ kind: "drawing", from: at, to: at });
    }

    return {
        action,
        cursor,
        show: setCursor,
        grab(event, id, end) {
            // Segments often begin where others do: their ends are in nobody's way while something is drawn.
            if (tool !== "move") return;
            event.stopPropagation();
            svg.current?.setPointerCapture(event.pointerId);
            setAction({ kind: "moving", id, end });
        },
        onPointerDown(event) {
            if (event.button !== 0 || tool === "move") return;
            event.currentTarget.setPointerCapture(event.pointerId);
            pressedAt.current = [event.clientX, event.clientY];
            const at = locate(event);
            setCursor(at);
            if (action.kind !== "drawing") setAction({ kind: "drawing", from: at, to: at });
        },
        onPointerMove(event) {
            const at = locate(event);
            setCursor(at);
            if (action.kind === "drawing") setAction({ ...action, to: at });
            if (action.kind === "moving") onMoved(action.id, action.end, at);
        },
        onPointerUp(event) {
            const at = locate(event);
            if (action.kind === "moving") setAction({ kind: "none" });
            if (action.kind !== "drawing") return;
            const pressed = pressedAt.current ?? [event.clientX, event.clientY];
            const dragged = distance(pressed, [event.clientX, event.clientY]) >= clickDistance;
            const second = distance(action.from, at) >= 1 && !dragged;
            if (dragged || second) finish(action.from, at);
        },
        onKeyDown(event) {
            const now = cursor ?? [size.width / 2, size.height / 2];
            const moved = nudge(now, event.key, event.shiftKey, size);
            if (moved) {
                setCursor(moved);
                if (action.kind === "drawing") setAction({ ...action, to: moved });
            } else if ((event.key === "Enter" || event.key === " ") && tool !== "move") {
                setCursor(now);
                place(clamp(now, size));
            } else if (event.key === "Escape" && action.kind !== "none") {
                setAction({ kind: "none" });
            } else {
                return;
            }
            event.preventDefault();
        },
    };
}
