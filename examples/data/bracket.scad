// Pillow-block bearing bracket: base plate with countersunk bolt holes and two slots, an upright with
// a bearing bore and its ring of cover screws, stiffened by gussets on both sides. Millimetres.
//
// Export: openscad -o bracket.stl bracket.scad

$fn = 36;

plate = [140, 84, 12];
corner = 14;            // radius of the plate's corners
edge = 2;               // rounding of the plate's upper edge
bolt = [8.5, 16, 4.5];  // hole, countersink and countersink depth
bolt_pitch = [112, 56];

wall = 18;        // thickness of the upright
axis = 70;        // height of the bearing axis above the underside
boss = 33;        // outer radius round the bore
boss_length = 30;
bore = 21;        // bearing seat
shaft = 15;       // shaft clearance behind the seat
seat_depth = 20;
cover_screws = 6;

overlap = 0.5;

module rounded_plate() {
  hull() for (x = [-1, 1], y = [-1, 1])
    translate([x * (plate.x / 2 - corner), y * (plate.y / 2 - corner), 0]) {
      cylinder(r = corner, h = plate.z - edge);
      translate([0, 0, plate.z - edge]) rotate_extrude()
        intersection() {
          translate([corner - edge, 0]) circle(r = edge, $fn = 16);
          square([corner, edge]);
        }
    }
}

module countersunk_hole() {
  translate([0, 0, -overlap]) cylinder(d = bolt[0], h = plate.z + 2 * overlap);
  translate([0, 0, plate.z - bolt[2]]) cylinder(d1 = bolt[0], d2 = bolt[1], h = bolt[2] + 0.01);
}

module slot() {
  hull() for (x = [-9, 9]) translate([x, 0, -overlap]) cylinder(d = 7, h = plate.z + 2 * overlap);
}

module upright() {
  rotate([90, 0, 0]) {
    translate([0, 0, -wall / 2]) linear_extrude(wall) hull() {
      translate([0, axis]) circle(r = boss, $fn = 60);
      translate([-43, plate.z - overlap]) square([86, 1]);
    }
    // The boss is chamfered at both ends.
    translate([0, axis, -boss_length / 2]) rotate_extrude($fn = 60)
      polygon([[0, 0], [boss - 3.5, 0], [boss - 2, 1.5], [boss - 2, boss_length - 1.5],
               [boss - 3.5, boss_length], [0, boss_length]]);
  }
}

module bearing_seat() {
  rotate([90, 0, 0]) translate([0, axis, -boss_length / 2]) {
    translate([0, 0, -overlap]) cylinder(r = shaft, h = boss_length + 2 * overlap, $fn = 60);
    translate([0, 0, boss_length - seat_depth]) cylinder(r = bore, h = seat_depth + overlap, $fn = 60);
    translate([0, 0, boss_length - 1]) cylinder(r1 = bore, r2 = bore + 1.2, h = 1.2, $fn = 60);
    // A groove for the retaining ring.
    translate([0, 0, boss_length - 4.6]) cylinder(r = bore + 1.4, h = 1.6, $fn = 60);
    for (i = [0:cover_screws - 1]) rotate(360 / cover_screws * (i + 0.5))
      translate([26, 0, boss_length - 12]) cylinder(d = 4.2, h = 12 + overlap, $fn = 18);
  }
}

module grease_hole() {
  translate([0, -wall / 4 + 3, axis]) cylinder(d = 5, h = boss + 5, $fn = 18);
  translate([0, -wall / 4 + 3, axis + boss - 2.5]) cylinder(d1 = 5, d2 = 11, h = 3, $fn = 18);
}

// One rib: a triangle with a concave fillet instead of its long side.
module gusset(x) {
  thickness = 9;
  for (side = [-1, 1]) translate([x - thickness / 2, 0, plate.z - overlap]) rotate([90, 0, 90])
    linear_extrude(thickness) difference() {
      scale([side, 1]) square([37, 33]);
      translate([side * 38, 34]) circle(r = 28, $fn = 60);
    }
}

difference() {
  union() {
    rounded_plate();
    upright();
    for (x = [-30, 30]) gusset(x);
  }
  for (x = [-1, 1], y = [-1, 1]) translate([x * bolt_pitch.x / 2, y * bolt_pitch.y / 2, 0]) countersunk_hole();
  for (y = [-1, 1]) translate([0, y * 29, 0]) slot();
  bearing_seat();
  grease_hole();
}
