import type { GroundMark, Parameter, References, VerticalMark } from "@/api/types";
import type { Fault } from "@/lib/faults";
import type { Point, Size } from "@/lib/geometry";

export type MarkKind = "ground" | "vertical";
/** What the pointer does in the picture. */
export type Tool = MarkKind | "move";
export type End = 0 | 1;

/** A segment that a person has drawn; an upright one from its foot to its top. Lengths are texts as they were typed. */
export interface Mark {
    id: number;
    kind: MarkKind;
    ends: readonly [Point, Point];
    metres: string;
    tolerance: string;
}

/** What is known of the camera beforehand, as typed; empty where it is to be found. */
export type Fixed = Record<Parameter, string>;
export const nothingFixed: Fixed = { tilt: "", roll: "", height_m: "", vertical_fov: "" };

export function addMark(marks: Mark[], kind: MarkKind, ends: readonly [Point, Point]): Mark[] {
    const id = Math.max(0, ...marks.map((mark) => mark.id)) + 1;
    return [...marks, { id, kind, ends, metres: "", tolerance: "" }];
}

export function changeMark(marks: Mark[], id: number, change: Partial<Mark>): Mark[] {
    return marks.map((mark) => (mark.id === id ? { ...mark, ...change } : mark));
}

export function moveEnd(marks: Mark[], id: number, end: End, to: Point): Mark[] {
    return marks.map((mark) =>
        mark.id === id ? { ...mark, ends: end === 0 ? [to, mark.ends[1]] : [mark.ends[0], to] } : mark,
    );
}

/** "Ground 2": what the server calls the second segment on the ground, for people. */
export function nameOf(marks: Mark[], mark: Mark): string {
    const number = marks.filter((other) => other.kind === mark.kind).indexOf(mark) + 1;
    return `${mark.kind === "ground" ? "Ground" : "Pole"} ${number}`;
}

/** A length as typed, with a point or a comma; not a number where it is none. */
export function readNumber(text: string): number {
    const trimmed = text.trim().replace(",", ".");
    return trimmed === "" ? Number.NaN : Number(trimmed);
}

/** The marks that have no usable length yet. */
export function unfinished(marks: Mark[]): Mark[] {
    return marks.filter((mark) => !(readNumber(mark.metres) > 0) || (mark.tolerance !== "" && !(readNumber(mark.tolerance) > 0)));
}

/** What the server calibrates from. */
export function toReferences(marks: Mark[], size: Size, fixed: Fixed, clickError: number): References {
    const of = (kind: MarkKind) => marks.filter((mark) => mark.kind === kind);
    const lengths = (mark: Mark) => ({
        metres: readNumber(mark.metres),
        ...(mark.tolerance === "" ? {} : { tolerance: readNumber(mark.tolerance) }),
    });
    const held = Object.entries(fixed).filter(([, text]) => text.trim() !== "");
    return {
        size: [size.width, size.height],
        ground: of("ground").map((mark): GroundMark => ({ from: mark.ends[0], to: mark.ends[1], ...lengths(mark) })),
        vertical: of("vertical").map((mark): VerticalMark => ({ foot: mark.ends[0], top: mark.ends[1], ...lengths(mark) })),
        fixed: Object.fromEntries(held.map(([name, text]) => [name, readNumber(text)])),
        click_error: clickError,
    };
}

/** Faults of marks ("ground[1].metres") by the mark that they are about; the others stay. */
export function placeMarkFaults(faults: Fault[], marks: Mark[]): { byMark: Map<number, string>; rest: Fault[] } {
    const byMark = new Map<number, string>();
    const rest: Fault[] = [];
    for (const fault of faults) {
        const [, kind, index] = /^(ground|vertical)\[(\d+)\]/.exec(fault.path) ?? [];
        const mark = marks.filter((other) => other.kind === kind)[Number(index)];
        if (mark) byMark.set(mark.id, fault.reason);
        else rest.push(fault);
    }
    return { byMark, rest };
}
